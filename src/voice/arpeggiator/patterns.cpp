#include "voice/arpeggiator/patterns.h"

#include <algorithm>
#include <cmath>

namespace stratovane {

namespace {

enum : int { controlStatus = 0xB0, firstRow = 128, secondRow = 129 };

constexpr int octave = 12;
constexpr std::uint32_t sequenceSteps = 16;
constexpr double overlap = 0.001;  // beats: a full gate reaches into the next step, for ties

void sendRows(NoteOutput& output, const ArpeggiatorStep& row) {
    output.send(controlStatus, firstRow, row.sequence1);
    output.send(controlStatus, secondRow, row.sequence2);
}

struct Choice {
    ArpeggiatorKey key;
    std::uint32_t octaves = 0;
};

/// The key that an arpeggio plays at step s of n keys over O octaves.
Choice arpeggioKey(const PatternStep& step) {
    const auto n = static_cast<std::uint32_t>(step.keys.count());
    const auto O = static_cast<std::uint32_t>(step.view.octaves());
    const std::uint32_t s = step.counter;
    const auto sorted = step.keys.sorted();
    const std::uint32_t round = (s / n) % O;
    switch (step.view.mode()) {
        case ArpeggiatorMode::down:
            return {sorted[n - 1 - s % n], O - 1 - round};
        case ArpeggiatorMode::upAndDown: {
            const std::uint32_t period = std::max(2 * O * n, 3u) - 2;
            std::uint32_t q = s % period;
            if (q >= O * n) q = period - q;
            return {sorted[q % n], (q / n) % O};
        }
        case ArpeggiatorMode::asPlayed:
            return {step.keys.played()[s % n], round};
        case ArpeggiatorMode::random: {
            const auto drawn = static_cast<std::uint32_t>(step.random.draw()) % O;
            return {sorted[static_cast<std::uint32_t>(step.random.draw()) % n], drawn};
        }
        default:
            return {sorted[s % n], round};
    }
}

void playArpeggio(const PatternStep& step) {
    if (const int steps = step.view.steps(); steps > 0)
        sendRows(step.output, step.view.step(step.counter % static_cast<std::uint32_t>(steps)));
    const Choice choice = arpeggioKey(step);
    const double length = double{step.view.gate()} * step.stepBeats + overlap;
    step.output.play({choice.key.note + static_cast<int>(choice.octaves) * octave,
                      choice.key.velocity, step.now, step.now + length, step.view.scaleRoot()},
                     NoteOutput::Ties::any);
}

double gatedBeats(const PatternStep& step, const ArpeggiatorStep& row) {
    return double{std::min(1.0f, row.gate * step.view.gate())} * step.stepBeats;
}

/// One of the sequencer's notes for every key, relative to it.
void playSequence(const PatternStep& step, const ArpeggiatorStep& row) {
    const int offset =
        static_cast<int>(std::floor(48.0f * row.note + 0.5f)) - 24 + step.view.transpose();
    const double off = step.now + gatedBeats(step, row) + overlap;
    for (const ArpeggiatorKey& key : step.keys.played()) {
        const int velocity =
            std::clamp(static_cast<int>(static_cast<float>(key.velocity) * row.velocity), 1, 127);
        step.output.play({key.note + offset, velocity, step.now, off, step.view.scaleRoot()},
                         NoteOutput::Ties::any);
    }
}

/// The notes number elements, so that no scale may move them.
void playElements(const PatternStep& step, const ArpeggiatorStep& row) {
    constexpr int firstElement = 35;
    const int note = static_cast<int>(std::floor(16.0f * row.note + 0.5f)) + firstElement;
    const double third = double{step.swing} / 3;
    const double length = gatedBeats(step, row) * (step.odd ? 1 - third : 1 + third) + overlap;
    for (const ArpeggiatorKey& key : step.keys.played())
        step.output.play(
            {note, key.velocity, step.now, step.now + length, ArpeggiatorView::noScale},
            NoteOutput::Ties::any);
}

}  // namespace

void playStep(const PatternStep& step) {
    const ArpeggiatorMode mode = step.view.mode();
    if (mode < ArpeggiatorMode::stepSequence) return playArpeggio(step);
    if (mode >= ArpeggiatorMode::phrase) return;
    std::uint32_t number = step.counter % sequenceSteps;
    if (mode == ArpeggiatorMode::randomSequence) {
        const int steps = step.view.steps();
        number = static_cast<std::uint32_t>(step.random.draw()) %
                 (steps > 0 ? static_cast<std::uint32_t>(steps) : sequenceSteps);
    }
    const ArpeggiatorStep& row = step.view.step(number);
    sendRows(step.output, row);
    if (mode == ArpeggiatorMode::elementSequence) return playElements(step, row);
    if (mode != ArpeggiatorMode::controllerSequence) playSequence(step, row);
}

}  // namespace stratovane
