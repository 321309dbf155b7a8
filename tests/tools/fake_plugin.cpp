// A plug-in of known sound that writes down what its host does. Part 1 has a patch from the start,
// the others after a program change that finds something and three idle calls, none after an
// exclusive message other than those of General MIDI; notes of part 2 come out of pair 2. Chunks
// come back as they were given. Its arpeggiators play what a channel gets, notes an octave up.
//
// FAKE_MODE: refuse (no instance), full (no room for effects), nan (samples), endless (notes
// outlive controller 123), gm (banks 78 and 79), mute (tells no arpeggiator), lossy (loses 3 events
// of it).
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "host/arpeggiator_request.h"
#include "mrx/effect_record.h"
#include "mrx/events.h"
#include "mrx/host_records.h"
#include "mrx/opcodes.h"

namespace stratovane {
namespace {

constexpr double releasePerFrame = 0.999;
constexpr int idlesToLoad = 3;
constexpr std::int32_t partParameters = 152, parameterCount = 2528, linkRow = 0, levelRow = 2;
constexpr std::size_t drumPart = 9;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

struct Program {
    int bank = 0, number = 0;
    const char* name = "";  // Windows-1252
};
constexpr Program library[] = {{0, 1, "One"},       {0, 5, "Five"},      {0, 7, "Seven"},
                               {3, 17, "Deep One"}, {3, 18, "Caf\xE9"},  {78, 0, "Grand"},
                               {78, 5, "E-Piano"},  {79, 0, "Standard"}, {120, 5, "Evening"}};

using Chunk = std::vector<std::uint8_t>;

class FakePlugIn {
  public:
    explicit FakePlugIn(HostCallback host) : host_{host}, log_{environment("FAKE_LOG")} {
        record_.request = &entry;
        record_.processReplacing = &renderEntry;
        record_.getParameter = [](EffectRecord* record, std::int32_t index) {
            return of(record).parameter(index);
        };
        record_.setParameter = [](EffectRecord* record, std::int32_t index, float value) {
            of(record).log_ << "parameter " << index << ' ' << value << '\n';
            of(record).parameters_[static_cast<std::size_t>(index)] = value;
        };
        record_.parameterCount = parameterCount;
        record_.outputCount = 8;
        record_.flags = canRenderReplacing | isInstrument;
        record_.object = this;
        parts_[0] = {true, 0, {}};
        for (std::size_t i = levelRow; i < parameters_.size(); i += partParameters)
            parameters_[i] = 0.5f;
        for (const Program& program : library)
            if ((program.bank != 78 && program.bank != 79) || mode("gm"))
                programs_.push_back(program);
        std::ifstream settings{environment("STRATOVANE_SETTINGS")};
        for (std::string line; std::getline(settings, line);) {
            log_ << "setting " << line << '\n';
            if (line.starts_with("Outputs="))
                record_.outputCount = 2 * static_cast<int>(line.size() - std::strlen("Outputs="));
            if (line == "MIDI Patches=2") tellsCurrent_ = false;
        }
        char name[64] = "";
        host(&record_, static_cast<int>(HostRequest::productString), 0, 0, name, 0);
        log_ << "host " << name << '\n';
    }
    EffectRecord* record() { return &record_; }

  private:
    struct Part {
        bool hasPatch = false;
        int location = 0;  // bank * 128 + number; 0 for none
        Chunk preset;      // what was loaded
    };
    struct Voice {
        double cyclesPerFrame = 0, level = 0;
        bool held = false;
    };

    static bool mode(std::string_view name) { return environment("FAKE_MODE") == name; }
    static FakePlugIn& of(EffectRecord* record) {
        return *static_cast<FakePlugIn*>(record->object);
    }
    static std::intptr_t entry(EffectRecord* record, std::int32_t opcode, std::int32_t index,
                               std::intptr_t value, void* pointer, float number) {
        return of(record).request(static_cast<Opcode>(opcode), index, value, pointer, number);
    }
    static void renderEntry(EffectRecord* record, float**, float** outputs, std::int32_t frames) {
        of(record).render(outputs, frames);
    }

    std::intptr_t request(Opcode opcode, std::int32_t index, std::intptr_t value, void* pointer,
                          float number) {
        switch (opcode) {
            case Opcode::close:
                log_ << "close\n";
                delete this;
                return 0;
            case Opcode::setSampleRate:
                rate_ = static_cast<double>(number);
                return 0;
            case Opcode::setBlockSize:
                log_ << "block size " << value << '\n';
                return 0;
            case Opcode::mainsChanged:
                log_ << "mains " << value << '\n';
                return 0;
            case Opcode::idle:
                log_ << "idle\n";
                if (busy_ > 0 && --busy_ == 0) {
                    parts_ = wanted_;
                    setupName_ = wantedSetup_;
                }
                return 1;
            case Opcode::getProgramName:
                std::strcpy(static_cast<char*>(pointer), setupName_.c_str());
                return 0;
            case Opcode::getParameterName:
                std::strcpy(static_cast<char*>(pointer), parameterName(index).c_str());
                return 0;
            case Opcode::getParameterDisplay:
                std::snprintf(static_cast<char*>(pointer), 8, "%.0f%%",
                              100 * static_cast<double>(parameter(index)));
                return 0;
            case Opcode::getOutputProperties: {
                auto& properties = *static_cast<OutputProperties*>(pointer);
                std::snprintf(properties.label, sizeof properties.label,
                              index < 2 ? "Fake/%d" : "Fake %d%c", index / 2 + 1,
                              index % 2 == 0 ? 'L' : 'R');
                return 1;
            }
            case Opcode::getChunk:
                return getChunk(*static_cast<void**>(pointer), index != 0);
            case Opcode::setChunk:
                return setChunk(static_cast<const std::uint8_t*>(pointer),
                                static_cast<std::size_t>(value), index != 0);
            case Opcode::processEvents:
                collect(*static_cast<const EventList*>(pointer));
                return 1;
            case Opcode::getMidiProgramName:
                return programName(*static_cast<MidiProgramName*>(pointer));
            case Opcode::getCurrentMidiProgram:
                return currentProgram(index, *static_cast<MidiProgramName*>(pointer));
            case Opcode::getMidiProgramCategory: {
                auto& category = *static_cast<MidiProgramCategory*>(pointer);
                std::strcpy(category.name, category.index == 3 ? "Basses" : "Others");
                return 128;
            }
            case Opcode::vendorSpecific:
                return vendorSpecific(index, value, pointer);
            default:
                return 0;
        }
    }

    std::intptr_t vendorSpecific(std::int32_t index, std::intptr_t value, void* pointer) {
        switch (index) {
            case fourCharacters("busy"):
                return busy_ > 0;
            case fourCharacters("voic"):
                return std::exchange(highest_, 0);
            case fourCharacters("mbox"):
                hook_ = reinterpret_cast<int (*)(const char*, int)>(pointer);
                return 0;
            case fourCharacters("part"):
                return static_cast<std::intptr_t>(
                           std::exchange(selected_, static_cast<std::size_t>(value))) +
                       1;
            case fourCharacters("fxad"):
                return mode("full") ? 0 : addEffect(value, pointer);
            case arpeggiatorRequest:
                return mode("mute") ? 0
                                    : arpeggiator(value, static_cast<ArpeggiatorTake*>(pointer));
            default:
                return 0;
        }
    }

    std::intptr_t addEffect(std::intptr_t part, const void* pointer) {
        struct {
            std::int32_t type;
            float values[12];
        } effect;
        std::memcpy(&effect, pointer, sizeof effect);
        log_ << "effect " << part << ": " << effect.type;
        for (float v : effect.values) log_ << ' ' << v;
        log_ << '\n';
        return 2;
    }

    std::intptr_t arpeggiator(std::intptr_t value, ArpeggiatorTake* take) {
        if (take == nullptr) return arpeggiates_ = value == 1;
        take->count = std::min(take->capacity, static_cast<std::int32_t>(played_.size()));
        std::copy_n(played_.begin(), take->count, take->events);
        played_.erase(played_.begin(), played_.begin() + take->count);
        return mode("lossy") ? 3 : 0;
    }

    float parameter(std::int32_t index) const {
        if (index % partParameters == levelRow && index < 16 * partParameters &&
            !parts_[static_cast<std::size_t>(index / partParameters)].hasPatch)
            return 0;
        return parameters_[static_cast<std::size_t>(index)];
    }
    static std::string parameterName(std::int32_t index) {
        const int part = index / partParameters + 1, row = index % partParameters;
        const std::string prefix = "Part " + std::to_string(part) + "  ";
        if (index == 0) return "Master Volume";
        if (row == levelRow) return prefix + "Level";
        if (row == linkRow) return prefix + "Link to Ch." + std::to_string(part - 1);
        return " " + prefix;
    }

    std::intptr_t programName(MidiProgramName& record) {
        const auto count = static_cast<std::int32_t>(programs_.size()) + 1;
        if (record.index < 1 || record.index >= count) return count;
        const Program& program = programs_[static_cast<std::size_t>(record.index - 1)];
        std::strcpy(record.name, program.name);
        record.bankLsb = static_cast<std::uint8_t>(program.bank);
        record.program = static_cast<std::uint8_t>(program.number);
        record.parentCategory = program.bank;
        return count;
    }
    const Program* find(int location) const {
        for (const Program& program : programs_)
            if (program.bank * 128 + program.number == location) return &program;
        return nullptr;
    }
    std::intptr_t currentProgram(std::int32_t channel, MidiProgramName& record) {
        if (!tellsCurrent_) return -1;
        const Program* program = find(parts_[static_cast<std::size_t>(channel)].location);
        if (program == nullptr) return 0;
        record.index = static_cast<std::int32_t>(program - programs_.data()) + 1;
        programName(record);
        record.name[0] = 0;
        return record.index;
    }

    /// What was given, else a record that holds the tag and a name.
    std::intptr_t getChunk(void*& data, bool preset) {
        const Part& part = parts_[selected_];
        if (preset && !part.hasPatch) return 0;
        given_ = preset ? part.preset : bank_;
        if (given_.empty()) {
            given_.assign(preset ? 1200 : 2000, 7);
            std::memcpy(given_.data(), "QvRR", 4);
            const Program* program = find(part.location);
            std::snprintf(reinterpret_cast<char*>(given_.data() + 32), 32, "%s",
                          program == nullptr ? "Sawtooth" : program->name);
        }
        data = given_.data();
        return static_cast<std::intptr_t>(given_.size());
    }
    std::intptr_t setChunk(const std::uint8_t* data, std::size_t size, bool preset) {
        log_ << "chunk " << (preset ? "preset " : "bank ") << size << " part " << selected_ << '\n';
        if (size < 1000 || std::memcmp(data, "QvRR", 4) != 0) {
            char text[64];
            std::snprintf(text, sizeof text, "Error loading chunk (%.4s, %d bytes)",
                          reinterpret_cast<const char*>(data), static_cast<int>(size));
            if (hook_ != nullptr) hook_(text, 0);
            return 0;
        }
        wanted_ = parts_;
        if (preset)
            wanted_[selected_] = {true, 0, {data, data + size}};
        else
            bank_.assign(data, data + size);
        busy_ = idlesToLoad;
        return 1;
    }

    void collect(const EventList& list) {
        for (int i = 0; i < list.count; ++i) {
            const Event* event = list.events[i];
            if (event->type == Event::systemExclusive) {
                const auto& exclusive = *reinterpret_cast<const SystemExclusiveEvent*>(event);
                log_ << "exclusive " << event->frame << ':';
                for (int byte = 0; byte < exclusive.dumpLength; ++byte)
                    log_ << ' ' << int{exclusive.dump[byte]};
                log_ << '\n';
                takeExclusive({exclusive.dump, static_cast<std::size_t>(exclusive.dumpLength)});
                continue;
            }
            const auto& midi = *reinterpret_cast<const MidiEvent*>(event);
            log_ << "midi " << event->frame << ": " << int{midi.bytes[0]} << ' '
                 << int{midi.bytes[1]} << ' ' << int{midi.bytes[2]} << '\n';
            if (waiting_ < events_.size()) events_[waiting_++] = midi;
        }
    }

    void takeExclusive(std::basic_string_view<std::uint8_t> message) {
        busy_ = 1;
        const bool general = message.size() > 4 && message[1] == 0x7E && message[3] == 9;
        if (general) generalMidi_ = message[4] != 2;
        wanted_ = parts_;
        if (general && !generalMidi_) return;
        for (std::size_t part = 0; part < parts_.size(); ++part) {
            const int location = (part == drumPart ? 79 : 78) * 128;
            wanted_[part] =
                general && find(location) != nullptr ? Part{true, location, {}} : Part{};
        }
    }

    void changeProgram(std::size_t part, int number) {
        busy_ = idlesToLoad;
        wanted_ = parts_;
        const int bank = generalMidi_ ? (part == drumPart ? 79 : 78) : bankSelect_[part];
        const Program* program = find(bank * 128 + number);
        if (program == nullptr) return;
        if (bank >= 120) {
            if (part != 15) return;
            wanted_.fill({true, 3 * 128 + 17, {}});
            wantedSetup_ = program->name;
        } else {
            wanted_[part] = {true, bank * 128 + number, {}};
        }
    }

    void play(const MidiEvent& midi) {
        const auto part = static_cast<std::size_t>(midi.bytes[0] & 15);
        const int command = midi.bytes[0] & 0xF0;
        const std::uint8_t first = midi.bytes[1], second = midi.bytes[2];
        Voice& voice = voices_[part][first];
        if (command == 0xC0) {
            changeProgram(part, first);
        } else if (command == 0xB0 && first == 32) {
            bankSelect_[part] = second;
        } else if (command == 0xB0 && first == 123 && !mode("endless")) {
            for (Voice& each : voices_[part]) each.held = false;
        } else if (command == 0x90 && second > 0 && parts_[part].hasPatch) {
            voice = {440 * std::exp2((first - 69) / 12.0) / rate_, second / 127.0, true};
        } else if (command == 0x90 || command == 0x80) {
            voice.held = false;
        }
        if (arpeggiates_ && command != 0xC0 && !(command == 0xB0 && first >= 64))
            arpeggios_[part].push_back(
                {now_,
                 static_cast<std::int32_t>(part),
                 {static_cast<std::uint8_t>(command),
                  static_cast<std::uint8_t>(command < 0xA0 ? first + 12 : first), second, 0}});
    }

    void render(float** outputs, std::int32_t frames) {
        const auto* time = reinterpret_cast<const TimeInfo*>(host_(
            &record_, static_cast<int>(HostRequest::getTime), 0, TimeInfo::wanted, nullptr, 0));
        log_ << "render " << frames << " at " << time->musicalPosition << " tempo " << time->tempo
             << " bar " << time->barStart << ' ' << time->timeSignatureNumerator << '/'
             << time->timeSignatureDenominator << " flags " << time->flags << '\n';
        for (int output = 0; output < record_.outputCount; ++output)
            std::fill_n(outputs[output], frames, 0.0f);
        std::size_t event = 0;
        for (std::int32_t frame = 0; frame < frames; ++frame, ++now_) {
            for (; event < waiting_ && events_[event].head.frame <= frame; ++event)
                play(events_[event]);
            add(outputs, frame);
        }
        for (; event < waiting_; ++event) play(events_[event]);
        waiting_ = 0;
        for (auto& part : arpeggios_) {  // a part is rendered whole before the next
            played_.insert(played_.end(), part.begin(), part.end());
            part.clear();
        }
        if (frames > 0 && mode("nan")) outputs[0][0] = std::numeric_limits<float>::quiet_NaN();
    }

    void add(float** outputs, std::int32_t frame) {
        constexpr double twoPi = 6.283185307179586;
        int sounding = 0;
        for (std::size_t part = 0; part < 2; ++part) {
            const double gain =
                2 * static_cast<double>(parameters_[part * partParameters + levelRow]);
            const std::size_t first = part == 1 && record_.outputCount >= 4 ? 2 : 0;
            for (Voice& voice : voices_[part]) {
                if (voice.level < 1e-9) continue;
                ++sounding;
                const auto sample = static_cast<float>(
                    gain * voice.level *
                    std::cos(twoPi * voice.cyclesPerFrame * static_cast<double>(now_)));
                outputs[first][frame] += sample;
                outputs[first + 1][frame] -= sample;
                if (!voice.held) voice.level *= releasePerFrame;
            }
        }
        highest_ = std::max(highest_, sounding);
    }

    HostCallback host_;
    std::ofstream log_;
    EffectRecord record_;
    double rate_ = 44100;
    std::int64_t now_ = 0;
    int busy_ = 0, highest_ = 0;
    std::array<Part, 16> parts_{}, wanted_{};
    std::string setupName_ = "Fake", wantedSetup_ = "Fake";
    std::vector<Program> programs_;
    std::array<int, 16> bankSelect_{};
    std::array<float, parameterCount> parameters_{};
    bool generalMidi_ = false, tellsCurrent_ = true, arpeggiates_ = false;
    std::size_t selected_ = 0;
    Chunk bank_, given_;
    int (*hook_)(const char*, int) = nullptr;
    std::array<std::vector<ArpeggiatorEvent>, 16> arpeggios_;
    std::vector<ArpeggiatorEvent> played_;
    std::array<std::array<Voice, 128>, 16> voices_{};
    std::array<MidiEvent, 127> events_{};
    std::size_t waiting_ = 0;
};

}  // namespace
}  // namespace stratovane

extern "C" __attribute__((visibility("default")))
stratovane::EffectRecord* fakeEntry(stratovane::HostCallback) __asm__("main");
stratovane::EffectRecord* fakeEntry(stratovane::HostCallback host) {
    using namespace stratovane;
    if (host(nullptr, static_cast<int>(HostRequest::version), 0, 0, nullptr, 0) == 0 ||
        environment("FAKE_MODE") == "refuse")
        return nullptr;
    return (new FakePlugIn{host})->record();
}
