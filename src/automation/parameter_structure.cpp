#include "automation/parameter_structure.h"

#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>

#include "automation/host_rows.h"

namespace stratovane {

namespace {

// Names here stand inside their groups, so they are shorter than those the host shows in a list.
struct Member {
    int row;
    std::string_view name;
};

constexpr Member mixer[] = {
    {strip::mute, "Mute"},
    {strip::level, "Level"},
    {strip::pan, "Pan"},
    {strip::output, "Output"},
    {strip::firstKnob, "Stratoknob 1"},
    {strip::firstKnob + 1, "Stratoknob 2"},
    {strip::firstKnob + 2, "Stratoknob 3"},
    {strip::firstKnob + 3, "Stratoknob 4"},
    {strip::firstKnob + 4, "Stratoknob 5"},
    {strip::firstKnob + 5, "Stratoknob 6"},
};
constexpr Member midi[] = {
    {strip::monoMode, "Mono Mode"},     {strip::glideMode, "Glide Mode"},
    {strip::glideTime, "Glide Time"},   {strip::keyLow, "Low Key"},
    {strip::keyHigh, "High Key"},       {strip::keyFade, "Key Xfade"},
    {strip::velocityLow, "Low Vel"},    {strip::velocityHigh, "High Vel"},
    {strip::velocityFade, "Vel Xfade"}, {strip::coarseTune, "Coarse Tune"},
    {strip::fineTune, "Fine Tune"},     {strip::polyphony, "Polyphony"},
    {strip::bendUp, "Pitchbend Up"},    {strip::bendDown, "Pitchbend Down"},
    {strip::levelTrim, "Level Trim"},
};
constexpr Member arpeggiator[] = {
    {strip::arpeggiatorOn, "On"},          {strip::arpeggiatorOn + 1, "Latch"},
    {strip::arpeggiatorOn + 2, "Mode"},    {strip::arpeggiatorOn + 3, "Octaves"},
    {strip::arpeggiatorOn + 4, "Steps"},   {strip::arpeggiatorOn + 5, "Sync"},
    {strip::arpeggiatorRate, "Rate"},      {strip::arpeggiatorRate + 1, "Gate"},
    {strip::arpeggiatorRate + 2, "Swing"},
};
constexpr Member tuning[] = {
    {strip::tuningBank, "Tuning1 Bank"},      {strip::tuningBank + 1, "Tuning1 Scale"},
    {strip::tuningBank + 2, "Tuning1 Root"},  {strip::tuningBank + 3, "Tuning2 Bank"},
    {strip::tuningBank + 4, "Tuning2 Scale"}, {strip::tuningBank + 5, "Tuning2 Root"},
    {strip::tuningBank + 6, "Tuning2 Depth"},
};
constexpr Member sends[] = {
    {strip::firstSend, "FX Send 1"},     {strip::firstSend + 1, "FX Send 2"},
    {strip::firstSend + 2, "FX Send 3"}, {strip::firstSend + 3, "FX Send 4"},
    {strip::sendMode, "FX Mode"},
};
constexpr int effectParameterRows = 16;  // rows 1..16, named by their number
constexpr Member effectEnd[] = {
    {0, "Mute"},         {18, "Level"},       {19, "Pan"},         {17, "Output"},
    {20, "Send to FX1"}, {21, "Send to FX2"}, {22, "Send to FX3"}, {23, "Send to FX4"},
};

class Writer {
  public:
    Writer() : text_{"<!-- Stratovane 2 -->\n<!-- Structure of the automation parameters -->\n"} {}

    void open(std::string_view element) {
        line({"<", element, ">"});
        depth_ += 2;
    }
    void openGroup(std::string_view name) {
        line({"<Group name=\"", name, "\">"});
        depth_ += 2;
    }
    void close(std::string_view element) {
        depth_ -= 2;
        line({"</", element, ">"});
    }
    void parameter(const HostAddress& address, std::string_view name) {
        const std::string id = std::to_string(encodeHostIndex(address));
        line({"<Param id=\"", id, "\" name=\"", name, "\" label=\"\"/>"});
    }
    void members(HostAddress address, std::span<const Member> rows) {
        for (const Member& member : rows) {
            address.row = member.row;
            parameter(address, member.name);
        }
    }
    void group(std::string_view name, const HostAddress& address, std::span<const Member> rows) {
        openGroup(name);
        members(address, rows);
        close("Group");
    }
    void effects(const std::string& name, HostAddress address) {
        for (address.slot = 0; address.slot < slots; ++address.slot) {
            openGroup(name + std::to_string(address.slot + 1));
            for (address.row = 1; address.row <= effectParameterRows; ++address.row)
                parameter(address, "Parameter " + std::to_string(address.row));
            members(address, effectEnd);
            close("Group");
        }
    }
    std::string take() { return std::move(text_); }

  private:
    void line(std::initializer_list<std::string_view> pieces) {
        text_.append(depth_, ' ');
        for (const std::string_view piece : pieces) text_ += piece;
        text_ += '\n';
    }

    std::string text_;
    std::size_t depth_ = 0;
};

}  // namespace

std::string parameterStructure() {
    constexpr std::string_view root = "MRXParametersStructure";
    Writer out;
    out.open(root);
    out.parameter({HostBlock::strip, 0, 0, 0}, "Master Volume");
    for (int part = 0; part < parts; ++part) {
        const HostAddress address{HostBlock::strip, part, 0, strip::link};
        out.openGroup("Channel " + std::to_string(part + 1));
        if (part > 0) out.parameter(address, "Link Switch");
        out.members(address, mixer);
        out.group("MIDI", address, midi);
        out.group("Arpeggiator", address, arpeggiator);
        out.group("Microtuning", address, tuning);
        out.members(address, sends);
        out.effects("Patch Send FX ", {HostBlock::insert, part, 0, 0});
        out.close("Group");
    }
    out.effects("Global Send FX ", {HostBlock::master, 0, 0, 0});
    out.close(root);
    return out.take();
}

}  // namespace stratovane
