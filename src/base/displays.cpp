#include "base/displays.h"

#include <cmath>

namespace stratovane {

namespace {
float decibels(float gain) { return 20.0f * std::log10(gain); }
}  // namespace

void showPercent(TextOut& out, float v) { out.print("%.0f %%", 100.0f * v); }

void showSignedPercent(TextOut& out, float v) { out.print("%+.0f %%", 200.0f * v - 100.0f); }

void showNote(TextOut& out, int note) {
    static constexpr std::string_view names[12] = {"C",  "C#", "D",  "D#", "E",  "F",
                                                   "F#", "G",  "G#", "A",  "A#", "B"};
    if (note > 127) return out.text("OFF");
    note = note < 0 ? 0 : note;
    out.print("%s%ld", names[note % 12], note / 12 - 2);
}

void showPatchLevel(TextOut& out, float v) {
    if (v < 0.0001f) return out.text("-oo");
    out.print("%+.1f dB", decibels(2.0f * v * v));
}

void showElementLevel(TextOut& out, float v) {
    if (v < 0.01f) return out.text("-oo");
    out.print("%+.1f dB", decibels(4.0f * v * v));
}

void showPan(TextOut& out, float v) {
    if (v >= 0.505f) return out.print("R%.0f", (v - 0.5f) * 128.0f);
    if (v <= 0.495f) return out.print("L%.0f", (0.5f - v) * 128.0f);
    out.text("<C>");
}

void showTime(TextOut& out, float v) {
    if (v < 0.5f) return out.print("%.0f ms", 4000.0f * v * v);
    out.print("%.2f s", 32.0f * v * v * v * v * v);
}

void showLfoRate(TextOut& out, float v) {
    const float x = 6.8024f * v - 3.4012f;  // ln of the rate in hertz: 1/30..30 Hz
    if (x < 0) return out.print("%.2f sec", std::exp(-x));
    out.print("%.2f Hz", std::exp(x));
}

}  // namespace stratovane
