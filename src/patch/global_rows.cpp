#include "patch/global_rows.h"

#include <cmath>
#include <cstddef>

#include "base/displays.h"
#include "base/tempo_divisions.h"
#include "patch/modulation_texts.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "patch/piano_layers.h"

namespace stratovane {

namespace {

// Conversions.

template <auto field>
void raw(GlobalScope& s, float v) {
    s.controls.*field = v;
}
template <auto field>
void flag(GlobalScope& s, float v) {
    s.controls.*field = isOn(v);
}
template <auto field>
void bendRange(GlobalScope& s, float v) {
    s.controls.*field = choice(v, 15.9f);
}

void arpeggiate(GlobalScope& s, float v) {
    s.arpeggiator.values[static_cast<std::size_t>(s.index - global::firstArpeggiator)] = v;
}

void buildKeyZone(GlobalScope& s, float) {
    s.controls.keyGain =
        makeZoneTable(s.value(global::keyLow), s.value(global::keyHigh), s.value(global::keyFade));
}
void buildVelocityZone(GlobalScope& s, float) {
    s.controls.velocityGain = makeZoneTable(
        s.value(global::velocityMin), s.value(global::velocityMax), s.value(global::velocityFade));
}

void setGain(GlobalScope& s, float) {
    const float level = s.value(global::level), trim = s.value(global::levelTrim);
    s.controls.gain = level * level * (trim * trim) * 8.0f;
}

void setSend(GlobalScope& s, float v) {
    s.controls.sends[static_cast<std::size_t>(s.index - global::firstSend)] = v * v;
}

void setType(GlobalScope& s, float v) {
    const int type = choice(v, 15.9f);
    if (type == s.controls.type) return;
    s.controls.type = type;
    s.resetControllers();
}

void setPiano(GlobalScope& s, float) {
    s.controls.pianoVariant = pianoVariant(s.value(global::pianoMode), s.value(global::pianoModel),
                                           s.value(global::pianoResonance));
    s.reapplyPianoLayers();
}

template <int slot>
TuningControls& tuning(GlobalScope& s) {
    return s.controls.tuning[slot];
}
template <int slot>
void setTuningBank(GlobalScope& s, float v) {
    tuning<slot>(s).bank = choice(v, 128.9f);
}
template <int slot>
void setTuningItem(GlobalScope& s, float v) {
    tuning<slot>(s).item = choice(v, 128.9f);
}
template <int slot>
void setTuningRoot(GlobalScope& s, float v) {
    tuning<slot>(s).root = centred(v, 12);
}

constexpr int lfoRateDestination = 1, glideDestination = 11;
constexpr int lfoRows[2] = {global::lfo1Wave, global::lfo2Wave};

template <int lfo>
void setLfoWave(GlobalScope& s, float v) {
    s.controls.lfo[lfo].wave = choice(v, 15.9f);
}
template <int lfo>
void setLfoRate(GlobalScope& s, float v) {
    if (s.controls.lfoRateFlags & (1 << lfo)) v = s.macro(lfoRateDestination, v);
    LfoControls& controls = s.controls.lfo[lfo];
    const float halfCyclesPerSecond = std::exp(6.8024f * v - 2.70805f);  // 1/15..60
    controls.freePerTick = halfCyclesPerSecond * static_cast<float>(tickFrames / s.rate());
    controls.tempoPerBeat = tempoDivision(v).perBeat;
}
template <int lfo>
void setLfoSync(GlobalScope& s, float v) {
    s.controls.lfo[lfo].sync = static_cast<LfoSync>(choice(v, 4.9f));
    s.reapply(lfoRows[lfo] + 2);
}
template <int lfo>
void setLfoPhase(GlobalScope& s, float v) {
    s.controls.lfo[lfo].phase = v;
}

void setMacroBase(GlobalScope& s, float v) {
    const int destination =
        s.index == global::glideTime ? glideDestination : s.index - global::firstMacro;
    s.controls.macroBase[static_cast<std::size_t>(destination)] = 2.0f * v - 1.0f;
    s.reapplyReaders(destination);
}

template <int knob>
void turnKnob(GlobalScope& s, float) {
    s.turnKnob(knob - 1);
}
void rebuildMacros(GlobalScope& s, float) { s.rebuildMacros(); }

void setStep(GlobalScope& s, float v) {
    const auto at = static_cast<std::size_t>(s.index - global::firstStep);
    ArpeggiatorStep& step = s.arpeggiator.steps16[at / 5];
    switch (at % 5) {
        case 0:
            step.note = v;
            return;
        case 1:
            step.velocity = 2.0f * v;
            return;
        case 2:
            step.gate = v;
            return;
        case 3:
            step.sequence1 = choice(v, 126.9f);
            return;
        default:
            step.sequence2 = choice(v, 126.9f);
    }
}

// Displays.

constexpr SwitchTexts muteTexts{"MUTE", "-"};
constexpr SwitchTexts sendTexts{"Patch", "Global"};
constexpr SwitchTexts modelTexts{"Model 2", "Model 1"};
constexpr auto ecoNames = choices(2.9f, "ECO", "Default", "XXL");
constexpr auto glideNames = choices(3.9f, "Off", "Default", "Legato", "On");
constexpr auto monoNames = choices(2.9f, "Poly", "Default", "Mono");
constexpr auto resonanceNames = choices(2.9f, "Off", "Sustain", "Always");
constexpr auto pianoModeNames = choices(2.9f, "ECO", "MID", "XXL");
constexpr Choices<10> arpeggiatorModes{15.9f,
                                       {"Up", "Down", "Up & Down", "As Played", "Random",
                                        "Step Seq", "Rand Seq", "Ctrl Seq", "Elem Seq", "Phrase"},
                                       " "};
constexpr auto arpeggiatorSyncs = choices(7.9f, "First Note", "Each Note", "Beat Sync");
constexpr auto bendNames = choices(15.9f, "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10",
                                   "11", "12", "12 Q", "Harm", "24");
constexpr auto scaleNames =
    choices(12.9f, "OFF", "C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B");

void showSteps(TextOut& out, float v, const ParameterView&) {
    const int steps = choice(v, 16.9f);
    if (steps == 0) return out.text("Default");
    out.print("%ld", steps);
}
void showDivision(TextOut& out, float v, const ParameterView&) { out.text(tempoDivision(v).name); }
void showSwing(TextOut& out, float v, const ParameterView&) {
    out.print("%.2f %%", 33.3333f * v + 50.0f);
}
void showFineTune(TextOut& out, float v, const ParameterView&) {
    out.print("%+.1f", 200.0f * v - 100.0f);
}
void showOutput(TextOut& out, float v, const ParameterView&) {
    const int pair = choice(v, 32.9f);
    if (pair == 0) return out.text("OFF");
    out.print("%ld", pair);
}
// The amount in use decides about "OFF", whatever value is asked for.
void showRedamper(TextOut& out, float v, const ParameterView& view) {
    if (choice(view.stored(view.index), 127.9f) == 0) return out.text("OFF");
    showPercent(out, v);
}
void showLfoRateFlags(TextOut& out, float v, const ParameterView&) {
    const int flags = choice(v, 7.9f);
    const auto digit = [flags](int bit) { return flags & (1 << bit) ? '1' + bit : '-'; };
    out.print("%c %c %c", digit(0), digit(1), digit(2));
}
void showCharacter(TextOut& out, float v, const ParameterView&) {
    out.print("%+.2f", 4.0f * v - 1.5f);
}
void showRoot(TextOut& out, float v, const ParameterView&) { showNote(out, 60 + centred(v, 12)); }
void showTuningDepth(TextOut& out, float v, const ParameterView&) {
    out.print("%+.1f %%", signedSquare(v) * 1600.0f);
}
void showKnobDestination(TextOut& out, float v, const ParameterView&) {
    out.text(macroDestinationName(choice(v, 15.9f) - 1));
}
void showScene(TextOut& out, float v, const ParameterView&) {
    const int scene = choice(v, 64.9f);
    if (scene == 0) return out.text("-");
    out.print("%d", scene);
}

template <int knob>
void showKnobName(TextOut& out, const ParameterView& view) {
    out.text(view.patch.knobName(knob));
}

bool playsElements(const ParameterView& view) {
    return static_cast<ArpeggiatorMode>(choice(view.stored(global::arpeggiatorMode), 15.9f)) ==
           ArpeggiatorMode::elementSequence;
}
void showStepName(TextOut& out, const ParameterView& view) {
    out.print(playsElements(view) ? "Step %ld" : "Note %ld",
              1 + (view.index - global::firstStep) / 5);
}
void showStepNote(TextOut& out, float v, const ParameterView& view) {
    if (playsElements(view)) return out.print("%ld", static_cast<int>(16.0f * v + 0.5f));
    out.print("%+ld", centred(v, 24));
}
void showStepVelocity(TextOut& out, float v, const ParameterView&) {
    out.print("%.0f %%", 200.0f * v);
}
void showSequence(TextOut& out, float v, const ParameterView&) {
    out.print("%+.0f", 200.0f * v - 100.0f);
}

using C = PatchControls;

constexpr auto listed = std::to_array<GlobalRow>({
    {.id = 0, .name = "Mute", .apply = flag<&C::muted>, .show = showSwitch<muteTexts>},
    {.id = 1,
     .name = "ECO Mode",
     .initial = 0.5f,
     .apply = raw<&C::eco>,
     .show = showChoice<ecoNames>,
     .resends = elementIndex::eco},
    {.id = 2, .name = "MIDI Link", .show = showSwitch<onOff>},
    {.id = 3,
     .name = "Glide",
     .initial = 0.4f,
     .apply = [](auto& s, float v) { s.controls.glide = static_cast<PatchGlide>(choice(v, 3.9f)); },
     .show = showChoice<glideNames>},
    {.id = 14, .initial = 0.5f, .apply = turnKnob<1>, .showName = showKnobName<1>},
    {.id = 15, .initial = 0.5f, .apply = turnKnob<2>, .showName = showKnobName<2>},
    {.id = 17, .name = "Arpeggiator", .apply = arpeggiate, .show = showSwitch<onOff>},
    {.id = 18, .name = "Latch", .apply = arpeggiate, .show = showSwitch<onOff>},
    {.id = 19, .name = "Mode", .apply = arpeggiate, .show = showChoice<arpeggiatorModes>},
    {.id = 20, .name = "Octaves", .apply = arpeggiate, .show = showNumber<39, 1>},
    {.id = 21, .name = "Steps", .apply = arpeggiate, .show = showSteps},
    {.id = 22, .name = "Sync", .apply = arpeggiate, .show = showChoice<arpeggiatorSyncs>},
    {.id = 23, .name = "Rate", .initial = 0.8f, .apply = arpeggiate, .show = showDivision},
    {.id = 24, .name = "Gate", .initial = 0.5f, .apply = arpeggiate},
    {.id = 25, .name = "Swing", .apply = arpeggiate, .show = showSwing},
    {.id = 26, .name = "Bank", .show = showBlank},
    {.id = 27, .name = "Prog", .show = showBlank, .loads = true},
    {.id = 28, .name = "Transpose", .initial = 0.5f, .apply = arpeggiate, .show = showCentred<24>},
    {.id = 29,
     .name = "Phrase Lo Key",
     .initial = 0.415f,
     .apply = arpeggiate,
     .show = showKey<1289>},
    {.id = 30,
     .name = "Phrase Hi Key",
     .initial = 1.0f,
     .apply = arpeggiate,
     .show = showKey<1289>},
    {.id = 31, .apply = arpeggiate},
    {.id = 32, .apply = arpeggiate},
    {.id = 33, .name = "Scale", .apply = arpeggiate, .show = showChoice<scaleNames>},
    {.id = 49, .name = "Key Low", .apply = buildKeyZone, .show = showKey<1279>},
    {.id = 50, .name = "Key High", .initial = 1.0f, .apply = buildKeyZone, .show = showKey<1279>},
    {.id = 51, .name = "Key Xfade", .apply = buildKeyZone, .show = showFade},
    {.id = 52, .name = "Vel Min", .apply = buildVelocityZone, .show = showNumber<1279>},
    {.id = 53,
     .name = "Vel Max",
     .initial = 1.0f,
     .apply = buildVelocityZone,
     .show = showNumber<1279>},
    {.id = 54, .name = "Vel Xfade", .apply = buildVelocityZone, .show = showFade},
    {.id = 55,
     .name = "Transpose",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.transpose = centred(v, 36); },
     .show = showCentred<36>},
    {.id = 56,
     .name = "Fine Tune",
     .initial = 0.5f,
     .apply =
         [](auto& s, float v) {
             s.controls.finePitch = (2.0f * v - 1.0f + s.tuningSemitones()) * semitonePitch;
         },
     .show = showFineTune},
    {.id = 57,
     .name = "Mono/Poly",
     .initial = 0.5f,
     .apply = raw<&C::monoPoly>,
     .show = showChoice<monoNames>,
     .resends = elementIndex::monoMode},
    {.id = 58,
     .name = "Max Voices",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.voiceLimit = 1 + choice(v, 63.9f); },
     .show = showNumber<639, 1>},
    {.id = 59,
     .name = "Level Trim",
     .initial = 0.7071f,
     .apply = setGain,
     .show = shown<showPatchLevel>},
    {.id = 60, .name = "Pan", .initial = 0.5f, .apply = raw<&C::pan>, .show = shown<showPan>},
    {.id = 61,
     .name = "Output",
     .initial = 0.05f,
     .apply = [](auto& s, float v) { s.controls.output = choice(v, 32.9f); },
     .show = showOutput},
    {.id = 62, .name = "FX Sends", .apply = flag<&C::patchSends>, .show = showSwitch<sendTexts>},
    {.id = 63, .name = "FX Send 1", .apply = setSend, .show = shown<showPatchLevel>},
    {.id = 64, .name = "FX Send 2", .apply = setSend, .show = shown<showPatchLevel>},
    {.id = 65, .name = "FX Send 3", .apply = setSend, .show = shown<showPatchLevel>},
    {.id = 66, .name = "FX Send 4", .apply = setSend, .show = shown<showPatchLevel>},
    {.id = 67, .name = "Level", .apply = setGain, .show = shown<showPatchLevel>},
    {.id = 68, .name = "Patch Type", .apply = setType, .choices = 15.9f},
    {.id = 69,
     .name = "Redamper",
     .apply = [](auto& s, float v) { s.controls.redamper = choice(v, 127.9f); },
     .show = showRedamper},
    {.id = 70,
     .name = "LFO Rate Ctl",
     .initial = 0.18f,
     .apply =
         [](auto& s, float v) {
             s.controls.lfoRateFlags = choice(v, 7.9f);
             s.reapply(global::lfo1Rate);
             s.reapply(global::lfo2Rate);
         },
     .show = showLfoRateFlags,
     .resends = elementIndex::lfo3Rate},
    {.id = 71,
     .name = "Piano Character",
     .apply = [](auto& s, float v) { s.controls.pianoCharacter = v - 0.375f; },
     .show = showCharacter},
    {.id = 72,
     .name = "Piano Model",
     .apply = setPiano,
     .show = showSwitch<modelTexts>,
     .loads = true},
    {.id = 73,
     .name = "PB Range",
     .initial = 0.15f,
     .apply = bendRange<&C::bendUp>,
     .show = showChoice<bendNames>},
    {.id = 74,
     .name = "PB Down",
     .initial = 0.15f,
     .apply = bendRange<&C::bendDown>,
     .show = showChoice<bendNames>},
    {.id = 75,
     .name = "Piano Reso",
     .apply = setPiano,
     .show = showChoice<resonanceNames>,
     .loads = true},
    {.id = 76, .name = "Bank", .apply = setTuningBank<0>, .show = showNothing, .loads = true},
    {.id = 77,
     .name = "Scale",
     .initial = 1.0f,
     .apply = setTuningItem<0>,
     .show = showNothing,
     .loads = true},
    {.id = 78, .name = "Root", .initial = 0.5f, .apply = setTuningRoot<0>, .show = showRoot},
    {.id = 80, .name = "Bank", .apply = setTuningBank<1>, .show = showNothing, .loads = true},
    {.id = 81,
     .name = "Scale",
     .initial = 1.0f,
     .apply = setTuningItem<1>,
     .show = showNothing,
     .loads = true},
    {.id = 82, .name = "Root", .initial = 0.5f, .apply = setTuningRoot<1>, .show = showRoot},
    {.id = 83,
     .name = "Depth",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.tuning2Depth = signedSquare(v) * 16.0f; },
     .show = showTuningDepth},
    {.id = 84,
     .name = "Piano Mode",
     .apply = setPiano,
     .show = showChoice<pianoModeNames>,
     .loads = true},
    {.id = 85,
     .name = "LFO1 Wave",
     .initial = 0.16f,
     .apply = setLfoWave<0>,
     .show = showLfoWave,
     .choices = 15.9f},
    {.id = 86, .name = "Sync", .apply = setLfoSync<0>, .show = showLfoSync},
    {.id = 87, .name = "Rate", .initial = 0.67f, .apply = setLfoRate<0>, .show = showLfoRateText},
    {.id = 88, .name = "Phase", .apply = setLfoPhase<0>, .show = showLfoPhase},
    {.id = 89,
     .name = "LFO2 Wave",
     .initial = 0.28f,
     .apply = setLfoWave<1>,
     .show = showLfoWave,
     .choices = 15.9f},
    {.id = 90, .name = "Sync", .apply = setLfoSync<1>, .show = showLfoSync},
    {.id = 91, .name = "Rate", .initial = 1.0f, .apply = setLfoRate<1>, .show = showLfoRateText},
    {.id = 92, .name = "Phase", .apply = setLfoPhase<1>, .show = showLfoPhase},
    {.id = 103, .initial = 0.5f, .apply = turnKnob<3>, .showName = showKnobName<3>},
    {.id = 105, .initial = 0.5f, .apply = turnKnob<4>, .showName = showKnobName<4>},
    {.id = 107, .initial = 0.5f, .apply = turnKnob<5>, .showName = showKnobName<5>},
    {.id = 109, .initial = 0.5f, .apply = turnKnob<6>, .showName = showKnobName<6>},
    {.id = 112, .name = "Knob 1", .apply = rebuildMacros, .show = showKnobDestination},
    {.id = 113, .name = "ofs", .apply = rebuildMacros},
    {.id = 114, .name = "rng", .apply = rebuildMacros},
    {.id = 115, .name = "Knob 2", .apply = rebuildMacros, .show = showKnobDestination},
    {.id = 116, .name = "ofs", .apply = rebuildMacros},
    {.id = 117, .name = "rng", .apply = rebuildMacros},
    {.id = 118, .name = "Knob 3", .apply = rebuildMacros, .show = showKnobDestination},
    {.id = 119, .name = "ofs", .apply = rebuildMacros},
    {.id = 120, .name = "rng", .apply = rebuildMacros},
    {.id = 123, .name = "Knob 6", .apply = rebuildMacros, .show = showKnobDestination},
    {.id = 124, .name = "ofs", .apply = rebuildMacros},
    {.id = 125, .name = "rng", .apply = rebuildMacros},
    {.id = 126, .name = "GM Wave", .initial = 0.5f, .apply = setMacroBase},
    {.id = 127, .name = "GM LFO Rate", .initial = 0.5f, .apply = setMacroBase},
    {.id = 128, .name = "GM Cutoff", .initial = 0.5f, .apply = setMacroBase},
    {.id = 129, .name = "GM Reso", .initial = 0.5f, .apply = setMacroBase},
    {.id = 130, .name = "GM F.Env", .initial = 0.5f, .apply = setMacroBase},
    {.id = 131, .name = "GM F.Att", .initial = 0.5f, .apply = setMacroBase},
    {.id = 132, .name = "GM F.Dec", .initial = 0.5f, .apply = setMacroBase},
    {.id = 133, .name = "GM Attack", .initial = 0.5f, .apply = setMacroBase},
    {.id = 134, .name = "GM Decay", .initial = 0.5f, .apply = setMacroBase},
    {.id = 135, .name = "GM Release", .initial = 0.5f, .apply = setMacroBase},
    {.id = 138, .name = "Knob 4", .apply = rebuildMacros, .show = showKnobDestination},
    {.id = 139, .name = "ofs", .apply = rebuildMacros},
    {.id = 140, .name = "rng", .apply = rebuildMacros},
    {.id = 141, .name = "Knob 5", .apply = rebuildMacros, .show = showKnobDestination},
    {.id = 142, .name = "ofs", .apply = rebuildMacros},
    {.id = 143, .name = "rng", .apply = rebuildMacros},
    {.id = 148, .name = "Glide Time", .initial = 0.5f, .apply = setMacroBase},
    {.id = 149,
     .name = "Current Scene",
     .apply = [](auto& s, float) { s.enterStoredScene(); },
     .show = showScene},
    {.id = 150, .name = "Scene MIDI Select", .show = showSwitch<onOff>},
    {.id = 151, .name = "Scene Root Note", .initial = 1.0f, .show = showKey<1289>},
});

consteval std::array<GlobalRow, 80> steps() {
    constexpr GlobalRow fields[5] = {
        {.initial = 0.5f, .apply = setStep, .show = showStepNote, .showName = showStepName},
        {.name = "Vel", .initial = 0.5f, .apply = setStep, .show = showStepVelocity},
        {.name = "Gate", .initial = 0.5f, .apply = setStep},
        {.name = "Seq1", .initial = 0.5f, .apply = setStep, .show = showSequence},
        {.name = "Seq2", .initial = 0.5f, .apply = setStep, .show = showSequence},
    };
    std::array<GlobalRow, 80> rows{};
    for (int i = 0; i < 80; ++i) {
        rows[static_cast<std::size_t>(i)] = fields[i % 5];
        rows[static_cast<std::size_t>(i)].id = global::firstStep + i;
    }
    return rows;
}

constexpr auto rows = joined(listed, steps());
static_assert(inOrder(rows) && rows.back().id < globalParameters);

}  // namespace

const GlobalRow* globalRow(int index) { return findRow<GlobalRow>(rows, index); }

float bendMacro(float v, float base, float offset) {
    const float shifted = std::clamp(v + offset, 0.0f, 1.0f);
    const float pull = base * base;
    return (1.0f - pull) * shifted + (base > 0.0f ? pull : 0.0f);
}

}  // namespace stratovane
