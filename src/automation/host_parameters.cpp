#include "automation/host_parameters.h"

#include <algorithm>

#include "base/displays.h"
#include "engine/command_ring.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/patch.h"

namespace stratovane {

HostParameters::HostParameters(EngineShared& shared, MultiSetup& multi, CommandRing& commands)
    : shared_{shared}, multi_{multi}, commands_{commands} {
    for (int i = 0; i < hostParameters; ++i) values_[static_cast<std::size_t>(i)] = hostDefault(i);
}

void HostParameters::attach(Engine& engine) {
    engine_.publish(&engine);
    for (int i = masterFirst; i < hostParameters; ++i) set(i, stored(i));
}

void HostParameters::refreshMasterGain() {
    const float volume = stored(0);
    shared_.masterGain = shared_.liftCompensation * (volume * volume);
}

void HostParameters::rememberInsert(const HostAddress& insert) {
    const Patch& patch = engine_.read()->patch(insert.part);
    remember(encodeHostIndex(insert),
             patch.get(firstSendSlot + insert.slot, hostRow(insert).target));
}

void HostParameters::rememberMaster(int slot) {
    for (int row = 0; row < effectRows; ++row) {
        const HostAddress address{HostBlock::master, 0, slot, row};
        remember(encodeHostIndex(address),
                 engine_.read()->master().get(firstSendSlot + slot, hostRow(address).target));
    }
}

bool HostParameters::partIsEmpty(int part) const {
    const Patch& patch = engine_.read()->patch(part);
    return patch.name().empty() && patch.elementCount() == 0;
}

void HostParameters::set(int index, float value) {
    if (index < 0 || index >= hostParameters) return;
    value = toUnitRange(value);
    values_[static_cast<std::size_t>(index)] = value;
    if (index == 0) refreshMasterGain();
    if (observer_ != nullptr) observer_->hostParameterSet(index);
    Engine* engine = engine_.read();
    if (engine == nullptr) return;
    const HostAddress a = decodeHostIndex(index);
    const HostRow& row = hostRow(a);
    switch (a.block) {
        case HostBlock::strip:
            return setStrip(a, value);
        case HostBlock::insert:
            return engine->patch(a.part).store(firstSendSlot + a.slot, row.target, value);
        case HostBlock::master:
            return engine->master().store(firstSendSlot + a.slot, row.target, value);
    }
}

void HostParameters::setStrip(const HostAddress& a, float value) {
    constexpr int allSoundOff = CommandRing::allSoundOff;
    const HostRow& row = hostRow(a);
    switch (row.effect) {
        case HostEffect::nothing:
            return;
        case HostEffect::masterOrLink: {
            if (a.part == 0) return;  // the master volume has acted already
            Shared<bool>& link = multi_.part[static_cast<std::size_t>(a.part - 1)].linked;
            if (!isOn(value) && link)
                commands_.push(CommandKind::linkedController, a.part, allSoundOff, 0);
            link = isOn(value);
            return;
        }
        case HostEffect::mute:
            if (isOn(value) && !isOn(engine_.read()->patch(a.part).get(0, row.target)))
                commands_.push(CommandKind::controller, a.part, allSoundOff, 0);
            break;
        case HostEffect::write:
            break;
    }
    engine_.read()->patch(a.part).store(0, row.target, value * row.scale + row.offset);
    keepKnob(a, value);
}

void HostParameters::keepKnob(const HostAddress& a, float value) {
    if (const int knob = a.row - strip::firstKnob; knob >= 0 && knob < 6)
        multi_.part[static_cast<std::size_t>(a.part)].knobs[static_cast<std::size_t>(knob)] = value;
}

// Refreshing. The patch holds the values already, so nothing is written into it: that would also
// disarm a learning controller, and a patch's arpeggio rate below the host's range would move.

void HostParameters::countAsSet(int index, float value) {
    remember(index, value);
    if (observer_ != nullptr) observer_->hostParameterSet(index);
}

void HostParameters::refreshPart(int part) {
    for (int row = 0; row < stripRows; ++row) {
        const HostAddress address{HostBlock::strip, part, 0, row};
        const int index = encodeHostIndex(address);
        if (!mapped(address)) continue;
        const float value = get(index);
        if (value == stored(index)) continue;
        keepKnob(address, value);
        countAsSet(index, value);
    }
}

void HostParameters::refreshEffect(HostAddress effect, const Patch& patch) {
    for (effect.row = 0; effect.row < effectRows; ++effect.row)
        countAsSet(encodeHostIndex(effect),
                   patch.get(firstSendSlot + effect.slot, hostRow(effect).target));
}

void HostParameters::refreshInsert(int part, int slot) {
    refreshEffect({HostBlock::insert, part, slot, 0}, engine_.read()->patch(part));
}

void HostParameters::refreshMaster(int slot) {
    refreshEffect({HostBlock::master, 0, slot, 0}, engine_.read()->master());
}

void HostParameters::touch(int part, int element, int index) {
    const int shown = hostIndexOf(part, element, index);
    if (shown < 0) return;
    const HostAddress address = decodeHostIndex(shown);
    if (address.block == HostBlock::strip) return countAsSet(shown, get(shown));
    const Patch& patch =
        address.block == HostBlock::master ? engine_.read()->master() : engine_.read()->patch(part);
    countAsSet(shown, patch.get(element, index));
}

bool HostParameters::mapped(const HostAddress& a) const {
    return engine_.read() != nullptr && a.block == HostBlock::strip && hostRow(a).target >= 0;
}

float HostParameters::get(int index) const {
    if (index < 0 || index >= hostParameters) return 0.0f;
    const HostAddress a = decodeHostIndex(index);
    if (!mapped(a)) return stored(index);
    const HostRow& row = hostRow(a);
    const float v = engine_.read()->patch(a.part).get(0, row.target);
    if (a.row != strip::arpeggiatorRate) return v;
    return std::clamp(v * 1.25f - 0.25f, 0.0f, 1.0f);  // undoes the row's scale and offset
}

void HostParameters::showName(TextOut& out, int index) const {
    if (index < 0 || index >= hostParameters) return;
    if (index == 0) return out.text("Master Volume");
    const HostAddress a = decodeHostIndex(index);
    const HostRow& row = hostRow(a);
    const bool master = a.block == HostBlock::master;
    const int number = master ? a.slot + 1 : a.part + 1;
    const bool blankFirst = row.name.empty() || row.name.front() == ' ';
    if (master)
        out.print(blankFirst ? " FX%d " : "FX%d  ", number);
    else
        out.print(blankFirst ? " Part %d " : "Part %d  ", number);

    const Engine* engine = engine_.read();
    if (row.name.empty()) {
        out.text(" ");
        if (engine != nullptr) engine->master().showName(out, firstSendSlot + a.slot, row.target);
        return;
    }
    const bool strips = a.block == HostBlock::strip;
    if (strips && a.row == strip::link) return out.print(row.name, a.part);
    const int knob = a.row - strip::firstKnob + 1;
    if (strips && knob >= 1 && knob <= 6 && engine != nullptr) {
        const std::string_view own = engine->patch(a.part).knobName(knob);
        if (!own.empty()) {
            out.text(" ");
            return out.text(own);
        }
    }
    out.text(row.name);
}

void HostParameters::showValue(TextOut& out, int index) const {
    if (index < 0 || index >= hostParameters) return;
    const float v = get(index);
    if (index == 0) return showPatchLevel(out, v);
    showOwn(out, decodeHostIndex(index), v);
}

void HostParameters::showOwn(TextOut& out, const HostAddress& a, float v) const {
    const Engine* engine = engine_.read();
    const int pairs = engine == nullptr ? outputPairs_ : engine->outputPairs();
    switch (hostRow(a).show) {
        case HostShow::percent:
            return out.print("%.0f%%", v * 100.0f);
        case HostShow::spacedPercent:
            return showPercent(out, v);
        case HostShow::signedPercent:
            return showSignedPercent(out, v);
        case HostShow::decibels:
            return showPatchLevel(out, v);
        case HostShow::pan:
            return showPan(out, v);
        case HostShow::onOff:
            return out.text(isOn(v) ? "On" : "Off");
        case HostShow::mute:
            return out.text(isOn(v) ? "Mute" : "-");
        case HostShow::sendMode:
            return out.text(isOn(v) ? "Use Patch FX (if any)" : "Use Global FX");
        case HostShow::outputPair:
            return out.print("%d", std::min(1 + choice(v, 32.9f), pairs));
        case HostShow::element:
            if (engine != nullptr)
                engine->master().showValue(out, firstSendSlot + a.slot, hostRow(a).target, v);
            return;
    }
}

}  // namespace stratovane
