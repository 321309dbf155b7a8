// A plug-in of known sound that writes down what its host does. Part 1 has a patch from the start,
// the others after a program change and three idle calls, none after an exclusive message; notes of
// part 2 come out of pair 2.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <utility>

#include "mrx/effect_record.h"
#include "mrx/events.h"
#include "mrx/host_records.h"
#include "mrx/opcodes.h"

namespace stratovane {
namespace {

constexpr double releasePerFrame = 0.999;
constexpr int idlesToLoad = 3;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

class FakePlugIn {
  public:
    explicit FakePlugIn(HostCallback host) : host_{host}, log_{environment("FAKE_LOG")} {
        record_.request = &entry;
        record_.processReplacing = &renderEntry;
        record_.getParameter = &parameterEntry;
        record_.outputCount = 8;
        record_.flags = canRenderReplacing | isInstrument;
        record_.object = this;
        hasPatch_[0] = true;
        std::ifstream settings{environment("STRATOVANE_SETTINGS")};
        for (std::string line; std::getline(settings, line);) {
            log_ << "setting " << line << '\n';
            if (line.starts_with("Outputs="))
                record_.outputCount = 2 * static_cast<int>(line.size() - std::strlen("Outputs="));
        }
        char name[64] = "";
        host(&record_, static_cast<int>(HostRequest::productString), 0, 0, name, 0);
        log_ << "host " << name << '\n';
    }
    EffectRecord* record() { return &record_; }

  private:
    struct Voice {
        double cyclesPerFrame = 0, level = 0;
        bool held = false;
    };

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
                if (busy_ > 0 && --busy_ == 0) hasPatch_ = wanted_;
                return 1;
            case Opcode::processEvents:
                collect(*static_cast<const EventList*>(pointer));
                return 1;
            case Opcode::getMidiProgramName:
                return programName(static_cast<MidiProgramName*>(pointer));
            case Opcode::getMidiProgramCategory:
                std::strcpy(static_cast<MidiProgramCategory*>(pointer)->name, "Basses");
                return 1;
            case Opcode::vendorSpecific:
                return vendorSpecific(index, value, pointer);
            default:
                return 0;
        }
    }

    std::intptr_t vendorSpecific(std::int32_t index, std::intptr_t value, const void* pointer) {
        if (index == fourCharacters("busy")) return busy_ > 0;
        if (index == fourCharacters("voic")) return std::exchange(highest_, 0);
        if (index == fourCharacters("fxad") && environment("FAKE_MODE") != "full") {
            struct {
                std::int32_t type;
                float values[12];
            } effect;
            std::memcpy(&effect, pointer, sizeof effect);
            log_ << "effect " << value << ": " << effect.type;
            for (float v : effect.values) log_ << ' ' << v;
            log_ << '\n';
            return 2;
        }
        return 0;
    }
    static float parameterEntry(EffectRecord* record, std::int32_t index) {
        constexpr std::int32_t partParameters = 152, level = 2;
        const bool has = of(record).hasPatch_[static_cast<std::size_t>(index / partParameters)];
        return index % partParameters == level && has ? 0.5f : 0.0f;
    }

    std::intptr_t programName(MidiProgramName* program) {
        if (program->index == 1) {
            std::strcpy(program->name, "Deep One");
            program->bankLsb = 3;
            program->program = 17;
        }
        return 2;
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
                wanted_.fill(false);
                busy_ = 1;
                continue;
            }
            const auto& midi = *reinterpret_cast<const MidiEvent*>(event);
            log_ << "midi " << event->frame << ": " << int{midi.bytes[0]} << ' '
                 << int{midi.bytes[1]} << ' ' << int{midi.bytes[2]} << '\n';
            if (waiting_ < events_.size()) events_[waiting_++] = midi;
        }
    }

    void play(const MidiEvent& midi) {
        const auto part = static_cast<std::size_t>(midi.bytes[0] & 15);
        const int command = midi.bytes[0] & 0xF0;
        Voice& voice = voices_[part][midi.bytes[1]];
        if (command == 0xC0) {
            wanted_ = hasPatch_;
            wanted_[part] = true;
            busy_ = idlesToLoad;
        } else if (command == 0x90 && midi.bytes[2] > 0 && hasPatch_[part]) {
            voice = {440 * std::exp2((midi.bytes[1] - 69) / 12.0) / rate_, midi.bytes[2] / 127.0,
                     true};
        } else if (command == 0x90 || command == 0x80) {
            voice.held = false;
        }
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
        if (frames > 0 && environment("FAKE_MODE") == "nan")
            outputs[0][0] = std::numeric_limits<float>::quiet_NaN();
    }

    void add(float** outputs, std::int32_t frame) {
        constexpr double twoPi = 6.283185307179586;
        int sounding = 0;
        for (std::size_t part = 0; part < 2; ++part) {
            const std::size_t first = part == 1 && record_.outputCount >= 4 ? 2 : 0;
            for (Voice& voice : voices_[part]) {
                if (voice.level < 1e-9) continue;
                ++sounding;
                const auto sample =
                    static_cast<float>(voice.level * std::cos(twoPi * voice.cyclesPerFrame *
                                                              static_cast<double>(now_)));
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
    std::array<bool, 16> hasPatch_{}, wanted_{};
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
