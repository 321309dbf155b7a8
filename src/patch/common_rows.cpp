// Rows that every type of element has: head, zones, voice mode, pitch, LFO 3, envelopes, filter,
// output, modulation.
#include <cmath>
#include <cstddef>

#include "base/displays.h"
#include "base/tempo_divisions.h"
#include "patch/element_rows.h"
#include "patch/modulation_texts.h"
#include "patch/patch.h"

namespace stratovane {

namespace {

using C = ElementControls;
using E = EnvelopeControls;
constexpr auto amp = &C::ampEnvelope;
constexpr auto filter = &C::filterEnvelope;

// Head.

void setMute(ElementScope& s, float v) {
    s.controls.muted = isOn(v);
    s.updateSilence();
}
void setType(ElementScope& s, float v) {
    const auto type = static_cast<ElementType>(choice(v, 15.9f));
    if (type != s.type()) s.changeType(type);
}
void setReceive(ElementScope& s, float v) {
    if (s.controls.receive == isOn(v)) return;
    s.controls.receive = isOn(v);
    s.reapplyMacroReaders();
    s.reapply(elementIndex::monoMode);
    s.reapply(elementIndex::eco);
}
void setEco(ElementScope& s, float v) {
    s.controls.eco = effectiveEco(s.patch.eco, s.controls.receive, v);
}

// Knob slots.

template <int slot>
void followSlot(ElementScope& s, float) {
    s.followSlot(slot);
}
template <int slot>
void connectSlot(ElementScope& s, float v) {
    s.connectSlot(slot, choice(v, 7.9f));
}

// Zones and voice mode.

void buildKeyZone(ElementScope& s, float) {
    s.controls.keyLow = choice(s.value(elementIndex::keyLow), 127.9f);
    s.controls.keyHigh = choice(s.value(elementIndex::keyHigh), 127.9f);
    s.controls.keyGain =
        makeZoneTable(s.value(elementIndex::keyLow), s.value(elementIndex::keyHigh),
                      s.value(elementIndex::keyFade));
}
void buildVelocityZone(ElementScope& s, float) {
    s.controls.velocityGain =
        makeZoneTable(s.value(elementIndex::velocityLow), s.value(elementIndex::velocityHigh),
                      s.value(elementIndex::velocityFade));
}
void setTrigger(ElementScope& s, float v) {
    const int condition = choice(v, 15.9f);
    s.controls.trigger = condition <= static_cast<int>(TriggerCondition::noArpeggiator)
                             ? static_cast<TriggerCondition>(condition)
                             : TriggerCondition::none;
}
void setMonoMode(ElementScope& s, float v) {
    constexpr int poly = 0, mono = 2;
    auto mode = static_cast<MonoMode>(choice(v, 4.9f));
    if (s.controls.receive) {
        const int patch = choice(s.patch.monoPoly, 2.9f);
        if (patch == poly) mode = MonoMode::poly;
        if (patch == mono && mode == MonoMode::poly) mode = MonoMode::last;
    }
    s.controls.monoMode = mode;
}
template <auto member>
void retrigger(ElementScope& s, float v) {
    s.controls.*member = static_cast<Retrigger>(choice(v, 4.9f));
}
void setNoteDelay(ElementScope& s, float v) {
    const int mode = choice(v, 7.9f);
    s.controls.noteDelay = mode <= static_cast<int>(NoteDelay::noteOff)
                               ? static_cast<NoteDelay>(mode)
                               : NoteDelay::off;
}
void setPriority(ElementScope& s, float v) {
    constexpr std::int32_t priorities[3] = {0, 1, 6};
    s.controls.priority = priorities[choice(v, 2.9f)];
}
int undampedFrom(float v) {
    const int note = choice(v, 128.9f);
    return note == 0 ? 128 : note;
}

// Pitch.

void setPitchOffset(ElementScope& s, float) {
    const int octaves = centred(s.value(elementIndex::octave), 4);
    const int semitones = centred(s.value(elementIndex::semitones), 12);
    const float cents = 2.0f * signedSquare(s.value(elementIndex::cents));  // in semitones
    s.controls.wholeSemitones = semitones + octaves * 12;
    s.controls.pitchOffset =
        (static_cast<float>(semitones) + static_cast<float>(octaves * 12) + cents) * semitonePitch;
}
template <auto member>
void bendPitch(ElementScope& s, float v) {
    s.controls.*member = signedSquare(v) * 8.317766f;  // 144 semitones a unit
}

// Wave and LFO 3.

// A "Sample" element's macro bends its formant instead.
void setWave(ElementScope& s, float v) {
    constexpr int waveDestination = 0;
    s.controls.wave = s.type() == ElementType::sample ? v : s.macro(waveDestination, v);
}
void setLfo3Rate(ElementScope& s, float v) {
    constexpr int rateDestination = 1;
    constexpr int followsMacro = 1 << 2;
    if (s.patch.lfoRateFlags & followsMacro) v = s.macro(rateDestination, v);
    const float halfCyclesPerSecond = std::exp(6.8024f * v - 2.70805f);  // 1/15..60
    s.controls.lfo3.freePerTick = halfCyclesPerSecond * s.tickSeconds();
    s.controls.lfo3.tempoPerBeat = tempoDivision(v).perBeat;
}

// Envelopes.

void setModulationLevel(ElementScope& s, float v) {
    s.controls.modulation.levels[static_cast<std::size_t>(s.index - 89) / 2] = 2.0f * v - 1.0f;
}
void setModulationTime(ElementScope& s, float v) {
    s.controls.modulation.ticks[static_cast<std::size_t>(s.index - 90) / 2] =
        timeSeconds(v) * static_cast<float>(s.rate()) / 32.0f + 1.0f;
}
void setTempoToEnvelopes(ElementScope& s, float v) {
    s.controls.tempoToEnvelopes = v;
    s.recompileRows();
}
template <auto envelope>
void setFade(ElementScope& s, float v) {
    (s.controls.*envelope).fadeSeconds = v >= 0.52f  ? std::exp(15.0f - 20.0f * v)
                                         : v > 0.48f ? 0.0f
                                                     : -std::exp(20.0f * v - 5.0f);
}
template <auto envelope>
void setDecayCurve(ElementScope& s, float v) {
    (s.controls.*envelope).decayCurve = std::exp(9.0f * v - 7.0f);
}
template <auto envelope>
void setVelocityToLevel(ElementScope& s, float v) {
    (s.controls.*envelope).velocityToLevel = 4.0f * v - 2.0f;
}
template <auto envelope>
void setVelocityToAttack(ElementScope& s, float v) {
    (s.controls.*envelope).velocityToAttack = 4.0f - 8.0f * v;
}
template <auto envelope>
void setVelocityToDecay(ElementScope& s, float v) {
    (s.controls.*envelope).velocityToDecay = 4.0f - 8.0f * v;
    (s.controls.*envelope).velocityToRelease = 2.0f - 4.0f * v;
}
void setFilterKeytrack(ElementScope& s, float v) {
    s.controls.filterEnvelope.decayKeytrack = 2.0f - 4.0f * v;
    s.controls.filterEnvelope.releaseKeytrack = 2.0f - 4.0f * v;
}
void setDecayKeytrack(ElementScope& s, float v) {
    s.controls.ampEnvelope.decayKeytrack = 2.0f - 4.0f * v;
    s.reapply(elementIndex::releaseKeytrack);  // which may follow this one
}
void setReleaseKeytrack(ElementScope& s, float v) {
    s.controls.ampEnvelope.releaseKeytrack =
        v > 0.01f ? 2.0f - 4.0f * v : 0.3f * s.controls.ampEnvelope.decayKeytrack;
}

// Filter and output.

void setFilterMode(ElementScope& s, float v) {
    const int mode = choice(v, 15.9f);
    s.controls.filterMode = mode <= static_cast<int>(FilterMode::damper)
                                ? static_cast<FilterMode>(mode)
                                : FilterMode::damper;
}
void setLevel(ElementScope& s, float v) {
    s.controls.level = 2.0f * v * v;
    s.updateSilence();
}

// Modulation.

void editRow(ElementScope& s, float) {
    s.editRow((s.index - elementIndex::firstModulationRow) / 5);
}

// Displays.

constexpr SwitchTexts muteTexts{"MUTE", "PLAY"};
constexpr SwitchTexts resumeTexts{"Analog (Resume)", "Digital (Restart)"};
constexpr SwitchTexts bendTexts{"Receive", "Ignore"};
constexpr SwitchTexts velocityTexts{"On", "Amp Env Only"};
constexpr auto slotModes = choices(3.9f, "Positive", "Negative", "Bipolar", "Switch");
constexpr auto triggers =
    choices(15.9f, "None", "Mod Wheel Up", "Mod Wheel Down", "Sustain Up", "Sustain Down",
            "Odd Patch Note", "Even Patch Note", "Odd Elem Note", "Even Elem Note", "No Arp");
constexpr auto muteConditions = choices(
    15.9f, "None", "Mute Same Note", "Mute Other Elems", "Mute Whole Patch", "None", "Mute Group 1",
    "Mute Group 2", "Mute Group 3", "Mute Group 4", "Mute Group 5", "Mute Group 6", "Mute Group 7",
    "Mute Group 8", "Mute Group 9", "Mute Group 10", "Mute Group 11");
constexpr auto monoModes =
    choices(4.9f, "Off (Poly)", "Lowest Note", "Highest Note", "First Note", "Last Note");
constexpr Choices<4> delayModes{7.9f, {"Off", "Time", "Tempo", "Note Off"}, " "};
constexpr auto glideModes = choices(3.9f, "Off", "Bend Only", "Fingered", "On");
constexpr auto retriggers = choices(4.9f, "Start New Voice", "All Modulation", "Filt+Amp Env",
                                    "Filt Env", "New Pitch Only");
constexpr auto filterModes =
    choices(15.9f, "Off", "Low 24", "Low 12", "Band 18", "Band 12", "High 12", "Peak EQ",
            "Presence", "Damper", "(9)", "(10)", "(11)", "(12)", "(13)", "(14)", "(15)");
constexpr auto priorities = choices(2.9f, "Low", "Normal", "High");

void showType(TextOut& out, float v, const ParameterView&) {
    out.text(elementTypeName(static_cast<ElementType>(choice(v, 15.9f))));
}
// In brackets what the patch overrules.
void showEco(TextOut& out, float v, const ParameterView& view) {
    const bool eco =
        effectiveEco(view.storedInPatch(global::eco), isOn(view.stored(elementIndex::receive)),
                     view.stored(elementIndex::eco));
    if (v <= 0.5f) return out.text(eco ? "ECO" : "(ECO)");
    out.text(eco ? "(XXL)" : "XXL");
}
void showSlotDestination(TextOut& out, float v, const ParameterView& view) {
    view.patch.showName(out, view.element, 16 + choice(v, 235.9f));
}
void showSignedNumber(TextOut& out, float v, const ParameterView&) {
    out.print("%+.1f", 200.0f * v - 100.0f);
}
void showUnison(TextOut& out, float v, const ParameterView&) {
    const int extra = choice(v, 7.9f);
    if (extra == 0) return out.text("OFF");
    out.print("%ld voices", extra + 1);
}
void showUnisonDetune(TextOut& out, float v, const ParameterView&) {
    out.print("%.1f c", 100.0f * v * v * v);
}
NoteDelay storedDelay(const ParameterView& view) {
    return static_cast<NoteDelay>(choice(view.stored(elementIndex::noteDelay), 7.9f));
}
void showDelayName(TextOut& out, const ParameterView& view) {
    out.text(storedDelay(view) == NoteDelay::noteOff ? "Fade Time" : "Delay Time");
}
void showDelayTime(TextOut& out, float v, const ParameterView& view) {
    if (storedDelay(view) == NoteDelay::tempo) return out.text(tempoDivision(1.0f - v).name);
    showTime(out, v);
}
void showCents(TextOut& out, float v, const ParameterView&) {
    if (std::fabs(signedSquare(v)) < 0.00025f) return out.text(" 0.0");
    out.print("%+.1f", 200.0f * signedSquare(v));
}
void showPitchKeytrack(TextOut& out, float v, const ParameterView&) {
    out.print("%+.2f", 4.0f * v - 1.0f);
}
void showRandomPitch(TextOut& out, float v, const ParameterView&) {
    out.print("%.3f cents", 12.0f * v * v * v * v);
}
void showBend(TextOut& out, float v, const ParameterView&) {
    out.print("%+.2f semi", signedSquare(v) * 144.0f);
}
void showCutoffKeytrack(TextOut& out, float v, const ParameterView&) {
    out.print("%+.0f %%", 400.0f * v - 100.0f);
}
void showSlotSource(TextOut& out, float v, const ParameterView&) {
    const int knob = choice(v, 7.9f);
    out.print(knob >= 1 && knob <= 6 ? "Knob %ld" : "%ld", knob);
}
void showUndamped(TextOut& out, float v, const ParameterView&) { showNote(out, undampedFrom(v)); }

// "Analog" elements have an oscillator of their own to start and shape.
struct TypedName {
    std::string_view analog, other;
};
constexpr TypedName startName{"Note-on Osc Phase", "Sample Startpoint"};
constexpr TypedName velocityToStartName{"Vel to Osc Phase", "Velocity to Startpoint"};
constexpr TypedName randomStartName{"Random Osc Phase", "Random Startpoint"};
constexpr TypedName waveName{"Osc1 Wave", "Wave"};
constexpr TypedName keyToWaveName{"Key to Osc1 Wave", "Key to Waveform"};
constexpr TypedName velocityToWaveName{"Vel to Osc1 Wave", "Vel to Waveform"};
constexpr TypedName randomWaveName{"Random Osc1 Wave", "Random Waveform"};
constexpr TypedName wave2Name{"Osc2 Wave", ""};

template <const auto& name>
void showTypedName(TextOut& out, const ParameterView& view) {
    out.text(view.type() == ElementType::analog ? name.analog : name.other);
}

constexpr auto listed = std::to_array<ElementRow>({
    {.id = 0, .name = "Mute", .initial = 1.0f, .apply = setMute, .show = showSwitch<muteTexts>},
    {.id = 1, .name = "Element Type", .apply = setType, .show = showType, .loads = true},
    {.id = 2,
     .name = "Receive CC/EE",
     .initial = 1.0f,
     .apply = setReceive,
     .show = showSwitch<onOff>},
    {.id = 3, .name = "ECO Mode", .initial = 1.0f, .apply = setEco, .show = showEco, .loads = true},
    {.id = 4,
     .name = "Mode",
     .initial = 0.67f,
     .apply = followSlot<0>,
     .show = showChoice<slotModes>},
    {.id = 5,
     .name = "Mode",
     .initial = 0.67f,
     .apply = followSlot<1>,
     .show = showChoice<slotModes>},
    {.id = 6, .name = "Dest 1", .apply = followSlot<0>, .show = showSlotDestination},
    {.id = 7, .name = "Depth 1", .initial = 0.5f, .apply = followSlot<0>, .show = showSignedNumber},
    {.id = 8, .name = "Dest 2", .apply = followSlot<0>, .show = showSlotDestination},
    {.id = 9, .name = "Depth 2", .initial = 0.5f, .apply = followSlot<0>, .show = showSignedNumber},
    {.id = 10, .name = "Dest 1", .apply = followSlot<1>, .show = showSlotDestination},
    {.id = 11,
     .name = "Depth 1",
     .initial = 0.5f,
     .apply = followSlot<1>,
     .show = showSignedNumber},
    {.id = 12, .name = "Dest 2", .apply = followSlot<1>, .show = showSlotDestination},
    {.id = 13,
     .name = "Depth 2",
     .initial = 0.5f,
     .apply = followSlot<1>,
     .show = showSignedNumber},
    {.id = 14, .name = "Knob (test only)", .initial = 0.5f, .apply = followSlot<0>},
    {.id = 15, .name = "Knob (test only)", .initial = 0.5f, .apply = followSlot<1>},
    {.id = 16, .name = "OFF"},
    {.id = 49, .name = "Keyrange Low", .apply = buildKeyZone, .show = showKey<1279>},
    {.id = 50,
     .name = "Keyrange High",
     .initial = 1.0f,
     .apply = buildKeyZone,
     .show = showKey<1279>},
    {.id = 51, .name = "Keyrange X-fade", .apply = buildKeyZone, .show = showFade},
    {.id = 52, .name = "Velocity Low", .apply = buildVelocityZone, .show = showNumber<1279>},
    {.id = 53,
     .name = "Velocity High",
     .initial = 1.0f,
     .apply = buildVelocityZone,
     .show = showNumber<1279>},
    {.id = 54, .name = "Velocity X-fade", .apply = buildVelocityZone, .show = showFade},
    {.id = 55, .name = "Trigger Condition", .apply = setTrigger, .show = showChoice<triggers>},
    {.id = 56,
     .name = "Mute Condition",
     .apply = [](auto& s, float v) { s.controls.muteCondition = choice(v, 15.9f); },
     .show = showChoice<muteConditions>},
    {.id = 57, .name = "Mono Mode", .apply = setMonoMode, .show = showChoice<monoModes>},
    {.id = 58,
     .name = "Max Voices",
     .initial = 1.0f,
     .apply = [](auto& s, float v) { s.controls.maxVoices = 1 + choice(v, 63.9f); },
     .show = showNumber<639, 1>},
    {.id = 59,
     .name = "Envelope Mode",
     .apply = flag<&C::resumeEnvelopes>,
     .show = showSwitch<resumeTexts>},
    {.id = 60,
     .name = "Mono Unison Voices",
     .apply = [](auto& s, float v) { s.controls.unisonExtra = choice(v, 7.9f); },
     .show = showUnison},
    {.id = 61,
     .name = "Unison Voice Detune",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.unisonDetune = v * v * v * semitonePitch; },
     .show = showUnisonDetune},
    {.id = 62,
     .name = "Unison Voice Pan",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.unisonPan = 2.0f * v; }},
    {.id = 63, .name = "Note Delay", .apply = setNoteDelay, .show = showChoice<delayModes>},
    {.id = 64, .apply = raw<&C::delayTime>, .show = showDelayTime, .showName = showDelayName},
    {.id = 65,
     .name = "Velocity to Delay",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.velocityToDelay = 3.0f * v - 1.5f; },
     .show = shown<showSignedPercent>},
    {.id = 66, .name = "Random Delay", .apply = raw<&C::randomDelay>},
    {.id = 67, .apply = raw<&C::start>, .showName = showTypedName<startName>, .macro = 10},
    {.id = 68,
     .initial = 0.5f,
     .apply = bipolar<&C::velocityToStart>,
     .show = shown<showSignedPercent>,
     .showName = showTypedName<velocityToStartName>},
    {.id = 69, .apply = raw<&C::randomStart>, .showName = showTypedName<randomStartName>},
    {.id = 70,
     .name = "Octave",
     .initial = 0.5f,
     .apply = setPitchOffset,
     .show = showCentred<4>,
     .voices = true},
    {.id = 71,
     .name = "Semitones",
     .initial = 0.5f,
     .apply = setPitchOffset,
     .show = showCentred<12>,
     .voices = true},
    {.id = 72,
     .name = "Cents",
     .initial = 0.5f,
     .apply = setPitchOffset,
     .show = showCents,
     .voices = true},
    {.id = 73,
     .name = "Pitch Keytrack",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.pitchKeytrack = 4.0f * v - 1.0f; },
     .show = showPitchKeytrack,
     .voices = true},
    {.id = 74,
     .name = "Random Pitch",
     .apply = [](auto& s, float v) { s.controls.randomPitch = v * v * v * v * octavePitch; },
     .show = showRandomPitch,
     .voices = true},
    {.id = 75,
     .name = "Patch Pitch Bend",
     .initial = 1.0f,
     .apply = flag<&C::patchBend>,
     .show = showSwitch<bendTexts>,
     .voices = true},
    {.id = 76,
     .name = "Glide Mode",
     .apply = [](auto& s,
                 float v) { s.controls.glideMode = static_cast<GlideMode>(choice(v, 3.9f)); },
     .show = showChoice<glideModes>},
    {.id = 77,
     .name = "Glide Type",
     .apply = flag<&C::resumeGlide>,
     .show = showSwitch<resumeTexts>},
    {.id = 78,
     .name = "Glide Time",
     .initial = 0.25f,
     .apply =
         [](auto& s, float v) {
             s.controls.glideCoefficient = approachCoefficient(timeSeconds(v), s.tickSeconds());
         },
     .show = shown<showTime>,
     .macro = 11,
     .voices = true},
    {.id = 79,
     .name = "Velocity to Glide Time",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.velocityToGlide = (v - 0.5f) * 6.931472f; },
     .show = shown<showSignedPercent>},
    {.id = 80,
     .name = "Attack Bend",
     .initial = 0.5f,
     .apply = bendPitch<&C::attackBend>,
     .show = showBend},
    {.id = 81,
     .name = "Velocity to Bend",
     .initial = 0.5f,
     .apply = bipolar<&C::velocityToBend>,
     .show = shown<showSignedPercent>},
    {.id = 82,
     .name = "Release Bend",
     .initial = 0.5f,
     .apply = bendPitch<&C::releaseBend>,
     .show = showBend},
    {.id = 83,
     .name = "Mono Legato Retrig",
     .initial = 1.0f,
     .apply = retrigger<&C::legatoRetrigger>,
     .show = showChoice<retriggers>},
    {.id = 84,
     .name = "Mono Release Retrig",
     .initial = 1.0f,
     .apply = retrigger<&C::releaseRetrigger>,
     .show = showChoice<retriggers>},
    {.id = 85,
     .name = "(Poly) LFO3 Wave",
     .initial = 0.16f,
     .apply = [](auto& s, float v) { s.controls.lfo3.wave = choice(v, 15.9f); },
     .show = showLfoWave,
     .voices = true},
    {.id = 86,
     .name = "Sync",
     .initial = 0.5f,
     .apply = [](auto& s,
                 float v) { s.controls.lfo3.sync = static_cast<LfoSync>(choice(v, 4.9f)); },
     .show = showLfoSync,
     .voices = true},
    {.id = 87,
     .name = "Rate",
     .initial = 0.75f,
     .apply = setLfo3Rate,
     .show = showLfoRateText,
     .voices = true},
    {.id = 88, .name = "Phase", .apply = raw<&C::lfo3, &LfoControls::phase>, .show = showLfoPhase},
    {.id = 89,
     .name = "Level 1",
     .initial = 0.5f,
     .apply = setModulationLevel,
     .show = shown<showSignedPercent>},
    {.id = 90, .name = "Time 1", .apply = setModulationTime, .show = shown<showTime>},
    {.id = 91,
     .name = "Level 2",
     .initial = 0.5f,
     .apply = setModulationLevel,
     .show = shown<showSignedPercent>},
    {.id = 92,
     .name = "Time 2",
     .initial = 0.25f,
     .apply = setModulationTime,
     .show = shown<showTime>},
    {.id = 93,
     .name = "Level 3",
     .initial = 1.0f,
     .apply = setModulationLevel,
     .show = shown<showSignedPercent>},
    {.id = 94,
     .name = "Time 3",
     .initial = 0.5f,
     .apply = setModulationTime,
     .show = shown<showTime>},
    {.id = 95,
     .name = "Sustain Level",
     .initial = 0.5f,
     .apply = setModulationLevel,
     .show = shown<showSignedPercent>},
    {.id = 96,
     .name = "Release Time",
     .initial = 0.5f,
     .apply = setModulationTime,
     .show = shown<showTime>},
    {.id = 97,
     .name = "Level 5",
     .initial = 0.5f,
     .apply = setModulationLevel,
     .show = shown<showSignedPercent>},
    {.id = 98, .apply = setWave, .showName = showTypedName<waveName>, .voices = true},
    {.id = 99,
     .initial = 0.5f,
     .apply = bipolar<&C::keyToWave>,
     .show = shown<showSignedPercent>,
     .showName = showTypedName<keyToWaveName>,
     .voices = true},
    {.id = 100,
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.velocityToWave = 3.0f * v - 1.5f; },
     .show = shown<showSignedPercent>,
     .showName = showTypedName<velocityToWaveName>,
     .voices = true},
    {.id = 101,
     .apply = raw<&C::randomWave>,
     .showName = showTypedName<randomWaveName>,
     .voices = true},
    {.id = 102, .apply = raw<&C::wave2>, .showName = showTypedName<wave2Name>, .voices = true},
    {.id = 103,
     .name = "Mode",
     .initial = 0.16f,
     .apply = setFilterMode,
     .show = showChoice<filterModes>,
     .voices = true,
     .layout = true},
    {.id = 104,
     .name = "Resonance",
     .initial = 0.12f,
     .apply = raw<&C::resonance>,
     .macro = 3,
     .voices = true},
    {.id = 105,
     .name = "Vel to Resonance",
     .initial = 0.5f,
     .apply = bipolar<&C::velocityToResonance>,
     .show = shown<showSignedPercent>,
     .voices = true},
    {.id = 106,
     .name = "Cutoff",
     .initial = 1.0f,
     .apply = [](auto& s,
                 float v) { s.controls.cutoff = tenOctavesPitch * v + middleCPitch(s.rate()); },
     .macro = 2,
     .voices = true},
    {.id = 107,
     .name = "Key",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.cutoffKeytrack = 4.0f * v - 1.0f; },
     .show = showCutoffKeytrack,
     .voices = true},
    {.id = 108,
     .name = "Velocity",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.velocityToCutoff = v - 0.5f; },
     .show = shown<showSignedPercent>,
     .voices = true},
    {.id = 109,
     .name = "Random Cutoff",
     .apply = [](auto& s, float v) { s.controls.randomCutoff = v * v / 2.0f; },
     .voices = true},
    {.id = 110,
     .name = "Env2",
     .initial = 0.5f,
     .apply = [](auto& s,
                 float v) { s.controls.envelopeToCutoff = (2.0f * v - 1.0f) * tenOctavesPitch; },
     .show = shown<showSignedPercent>,
     .macro = 4,
     .voices = true},
    {.id = 111,
     .name = "F. Attack",
     .apply = seconds<filter, &E::attackSeconds>,
     .show = shown<showTime>,
     .macro = 5},
    {.id = 112,
     .name = "F. Decay",
     .initial = 0.5f,
     .apply = seconds<filter, &E::decaySeconds>,
     .show = shown<showTime>,
     .macro = 6},
    {.id = 113,
     .name = "F. Sustain",
     .initial = 0.25f,
     .apply = raw<filter, &E::sustain>,
     .macro = 14},
    {.id = 114,
     .name = "F. Fade Up/Down",
     .initial = 0.5f,
     .apply = setFade<filter>,
     .show = shown<showSignedPercent>},
    {.id = 115,
     .name = "F. Release",
     .initial = 0.5f,
     .apply = seconds<filter, &E::releaseSeconds>,
     .show = shown<showTime>,
     .macro = 6},
    {.id = 116, .name = "F. Decay Curve", .apply = setDecayCurve<filter>},
    {.id = 117,
     .name = "F. Velocity to Level",
     .initial = 0.5f,
     .apply = setVelocityToLevel<filter>,
     .show = shown<showSignedPercent>},
    {.id = 118,
     .name = "F. Velocity to Attack",
     .initial = 0.5f,
     .apply = setVelocityToAttack<filter>,
     .show = shown<showSignedPercent>},
    {.id = 119,
     .name = "F. Velocity to Decay",
     .initial = 0.5f,
     .apply = setVelocityToDecay<filter>,
     .show = shown<showSignedPercent>},
    {.id = 120,
     .name = "F. Dec/Rel Keytrack",
     .initial = 0.5f,
     .apply = setFilterKeytrack,
     .show = shown<showSignedPercent>},
    {.id = 123, .name = "Tempo to Env Rates", .apply = setTempoToEnvelopes},
    {.id = 124,
     .name = "Voice Mute Fadeout",
     .apply = [](auto& s, float v) { s.controls.muteFadeSeconds = v * v; }},
    {.id = 125, .name = "Note-on Click", .apply = raw<&C::noteOnClick>},
    {.id = 126,
     .name = "Attack",
     .apply = seconds<amp, &E::attackSeconds>,
     .show = shown<showTime>,
     .macro = 7},
    {.id = 127,
     .name = "Decay",
     .initial = 0.5f,
     .apply = seconds<amp, &E::decaySeconds>,
     .show = shown<showTime>,
     .macro = 8},
    {.id = 128, .name = "Sustain", .initial = 1.0f, .apply = raw<amp, &E::sustain>, .macro = 13},
    {.id = 129,
     .name = "Fade Up/Down",
     .initial = 0.5f,
     .apply = setFade<amp>,
     .show = shown<showSignedPercent>},
    {.id = 130,
     .name = "Release",
     .initial = 0.1f,
     .apply = seconds<amp, &E::releaseSeconds>,
     .show = shown<showTime>,
     .macro = 9},
    {.id = 131, .name = "Decay Curve", .apply = setDecayCurve<amp>},
    {.id = 132,
     .name = "Velocity to Level",
     .initial = 0.875f,
     .apply = setVelocityToLevel<amp>,
     .show = shown<showSignedPercent>},
    {.id = 133,
     .name = "Velocity to Attack",
     .initial = 0.5f,
     .apply = setVelocityToAttack<amp>,
     .show = shown<showSignedPercent>},
    {.id = 134,
     .name = "Velocity to Decay",
     .initial = 0.5f,
     .apply = setVelocityToDecay<amp>,
     .show = shown<showSignedPercent>},
    {.id = 135,
     .name = "Decay Keytrack",
     .initial = 0.5f,
     .apply = setDecayKeytrack,
     .show = shown<showSignedPercent>},
    {.id = 137,
     .name = "Release Keytrack",
     .initial = 0.5f,
     .apply = setReleaseKeytrack,
     .show = shown<showSignedPercent>},
    {.id = 138,
     .name = "Receive Velocity",
     .initial = 1.0f,
     .apply = flag<&C::velocityToAll>,
     .show = showSwitch<velocityTexts>},
    {.id = 139,
     .name = "Output Level",
     .initial = 0.5f,
     .apply = setLevel,
     .show = shown<showElementLevel>,
     .voices = true},
    {.id = 140,
     .name = "Output Pan",
     .initial = 0.5f,
     .apply = raw<&C::pan>,
     .show = shown<showPan>,
     .voices = true},
    {.id = 141,
     .name = "Pan Keytrack",
     .initial = 0.5f,
     .apply = bipolar<&C::panKeytrack>,
     .show = shown<showSignedPercent>,
     .voices = true},
    {.id = 142,
     .name = "Random Pan",
     .apply = [](auto& s, float v) { s.controls.randomPan = v / 2.0f; },
     .voices = true},
    {.id = 143,
     .name = "Alternating Pan",
     .initial = 0.5f,
     .apply = bipolar<&C::alternatingPan>,
     .show = shown<showSignedPercent>,
     .voices = true},
    {.id = 144,
     .name = "Priority",
     .initial = 0.5f,
     .apply = setPriority,
     .show = showChoice<priorities>},
    {.id = 145, .name = "1.  Source", .apply = connectSlot<0>, .show = showSlotSource},
    {.id = 146, .name = "2.  Source", .apply = connectSlot<1>, .show = showSlotSource},
    {.id = 147,
     .name = "Receive AT",
     .initial = 1.0f,
     .apply = flag<&C::receivePressure>,
     .show = showSwitch<onOff>,
     .voices = true},
    {.id = 148,
     .name = "Undamped >",
     .apply = [](auto& s, float v) { s.controls.undampedFrom = undampedFrom(v); },
     .show = showUndamped},
    {.id = 149,
     .name = "Receive MW",
     .initial = 1.0f,
     .apply = flag<&C::receiveModWheel>,
     .show = showSwitch<onOff>,
     .voices = true},
});

consteval std::array<ElementRow, 80> modulationFields() {
    constexpr ElementRow fields[5] = {
        {.apply = editRow, .show = showRowSource, .showName = showRowName, .layout = true},
        {.apply = editRow, .show = showRowModifier, .showName = showRowName, .layout = true},
        {.initial = 0.5f, .apply = editRow, .show = showRowParameter, .showName = showRowName},
        {.apply = editRow, .show = showRowDestination, .showName = showRowName, .layout = true},
        {.initial = 0.5f, .apply = editRow, .show = showRowDepth, .showName = showRowName},
    };
    std::array<ElementRow, 80> rows{};
    for (int i = 0; i < 80; ++i) {
        rows[static_cast<std::size_t>(i)] = fields[i % 5];
        rows[static_cast<std::size_t>(i)].id = elementIndex::firstModulationRow + i;
    }
    return rows;
}

constexpr auto rows = joined(listed, modulationFields());
static_assert(inOrder(rows) && rows.back().id < elementParameters);

}  // namespace

std::span<const ElementRow> commonRows() { return rows; }

}  // namespace stratovane
