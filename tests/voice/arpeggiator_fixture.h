// An arpeggiator without a part: what it plays, as text, on a clock of 1000 frames a beat.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "voice/arpeggiator/arpeggiator.h"

namespace stratovane {

class ArpeggiatorRig {
  public:
    using S = ArpeggiatorSettings;

    ArpeggiatorSettings settings;
    const Phrase* phrase = nullptr;
    double beatsPerFrame = 0.001;
    double position = 0;  // of the next frame
    int frame = 0;
    int longestBlock = 1 << 20;
    Arpeggiator arpeggiator{1};

    struct Played {
        int frame;
        MidiBytes bytes;
        bool operator==(const Played&) const = default;
    };
    std::vector<Played> played;

    /// On, in sixteenths at half a gate.
    explicit ArpeggiatorRig(ArpeggiatorMode mode = ArpeggiatorMode::up) {
        settings.values[S::on] = 1;
        settings.values[S::gate] = 0.5f;
        settings.values[S::transpose] = 0.5f;
        rate(16);
        set(S::mode, static_cast<int>(mode), 15.9f);
    }
    /// Entry `i` of a list decoded with `factor`.
    void set(S::Parameter parameter, int i, float factor) {
        settings.values[parameter] = (static_cast<float>(i) + 0.5f) / factor;
    }
    void mode(ArpeggiatorMode mode) { set(S::mode, static_cast<int>(mode), 15.9f); }
    void rate(int division) { set(S::rate, division, 20.9f); }
    void steps(int count) { set(S::steps, count, 16.9f); }
    void sync(ArpeggiatorView::Sync sync) { set(S::sync, static_cast<int>(sync), 7.9f); }

    ArpeggiatorScore score() const { return {settings, phrase, beatsPerFrame}; }
    bool on(int note, int velocity = 100) { return arpeggiator.keyDown(note, velocity, score()); }
    bool off(int note) { return arpeggiator.keyUp(note, score()); }
    void chord(std::initializer_list<int> notes) {
        for (const int note : notes) on(note);
    }
    bool pedal(int value) { return arpeggiator.sustainPedal(value, score()); }

    void run(int frames) {
        for (int done = 0; done < frames;) {
            const int block = std::min(longestBlock, frames - done);
            for (int in = 0; in < block;) {
                const int until =
                    arpeggiator.framesUntilNext(block - in, position + in * beatsPerFrame, score());
                arpeggiator.advance(until, beatsPerFrame);
                in += until;
                if (in == block) break;
                for (MidiBytes bytes; arpeggiator.take(bytes);)
                    played.push_back({frame + in, bytes});
            }
            position += block * beatsPerFrame;
            frame += block;
            done += block;
        }
    }
    /// Runs, and tells what was played since last told: "frame+note", "frame-note" and
    /// "frame#controller=value".
    std::string after(int frames) {
        return told(frames, [](const Played& p) {
            const int kind = p.bytes[0];
            const char* sign = kind == 0x90 ? "+" : kind == 0x80 ? "-" : kind == 0xB0 ? "#" : "?";
            return text(p.frame) + sign + text(p.bytes[1]) +
                   (kind == 0xB0 ? std::string{"="} + text(p.bytes[2]) : "");
        });
    }
    /// As `after`, but only the notes struck: "60 64", with "/velocity" when asked for.
    std::string notes(int frames, bool velocities = false) {
        return told(frames, [velocities](const Played& p) {
            if (p.bytes[0] != 0x90) return std::string{};
            return text(p.bytes[1]) + (velocities ? std::string{"/"} + text(p.bytes[2]) : "");
        });
    }
    /// As `after`, but only the step numbers that rows numbered so send: "frame=step".
    std::string rows(int frames) {
        return told(frames, [](const Played& p) {
            return p.bytes[1] == 128 ? text(p.frame) + "=" + text(p.bytes[2]) : std::string{};
        });
    }
    void numberRows() {
        for (int i = 0; i < 16; ++i) settings.steps16[static_cast<std::size_t>(i)].sequence1 = i;
    }

  private:
    static std::string text(int number) { return std::to_string(number); }
    template <class Tell>
    std::string told(int frames, Tell tell) {
        run(frames);
        std::string all;
        for (const Played& p : played)
            if (const std::string one = tell(p); !one.empty())
                all += (all.empty() ? "" : " ") + one;
        played.clear();
        return all;
    }
};

}  // namespace stratovane
