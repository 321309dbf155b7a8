// The patch's own parameters as data: name, default, conversion, display, one row each.
#pragma once

#include "patch/arpeggiator_settings.h"
#include "patch/parameter_row.h"
#include "patch/patch_controls.h"

namespace stratovane {

/// What the conversion of a global row may read, write and set off. Owner of the controls.
struct GlobalScope {
    Patch& patch;
    PatchControls& controls;
    ArpeggiatorSettings& arpeggiator;
    int index;

    float value(int other) const;
    double rate() const;                   // Hz
    float tuningSemitones() const;         // engine-wide
    void reapply(int other);               // another global row
    void reapplyReaders(int destination);  // what macro destination 0..14 bends
    void reapplyPianoLayers();             // the wave selection of "Sample" elements 1..8
    void turnKnob(int knob);               // 0..5, to its stored position
    void rebuildMacros();                  // bases and offsets of all macro destinations
    void resetControllers();               // to the defaults of controls.type
    void enterStoredScene();               // the scene that "Current Scene" names, if it is there
    /// A value bent by macro destination 0..14.
    float macro(int destination, float v) const;
};

struct GlobalRow {
    int id = 0;
    std::string_view name{};
    float initial = 0;
    void (*apply)(GlobalScope&, float v) = nullptr;
    Show show = nullptr;  // null: percent
    ShowName showName = nullptr;
    int resends = -1;    // element parameter that receiving elements re-apply afterwards
    float choices = 0;   // not 0: a set that leaves trunc(choices * v) is not a change
    bool loads = false;  // applied by the UI thread's next look when the patch plays
};

/// The row of a global index; null for the unnamed ones. Any thread.
const GlobalRow* globalRow(int index);

/// What a macro destination makes of a value: the offset shifts it, a positive base pulls it toward
/// 1, a negative one scales it toward 0. Any thread.
float bendMacro(float v, float base, float offset);

}  // namespace stratovane
