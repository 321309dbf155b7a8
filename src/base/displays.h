// Display texts that patch, element, host and effect parameters share. Any thread.
#pragma once

#include "base/text_out.h"

namespace stratovane {

void showPercent(TextOut& out, float v);        ///< "50 %"
void showSignedPercent(TextOut& out, float v);  ///< "-100 %".."+100 %"
void showNote(TextOut& out, int note);          ///< "C3" is 60; above 127 "OFF"
void showPatchLevel(TextOut& out, float v);     ///< 20 log10(2v²) dB, "-oo" below 0.0001
void showElementLevel(TextOut& out, float v);   ///< 20 log10(4v²) dB, "-oo" below 0.01
void showPan(TextOut& out, float v);            ///< "L64", "<C>", "R64"
void showTime(TextOut& out, float v);           ///< "250 ms", "1.00 s"
void showLfoRate(TextOut& out, float v);        ///< free-running: "30.00 sec" at 0, "30.00 Hz" at 1

}  // namespace stratovane
