#include "block_plan.h"

#include <algorithm>
#include <cmath>

namespace stratovane::render {

Block BlockPlan::next() {
    while (transport_ + 1 < song_.transport.size() && song_.transport[transport_ + 1].frame <= at_)
        ++transport_;
    std::int64_t end = std::min(endFrame_, at_ + largestFrames_);
    if (transport_ + 1 < song_.transport.size())
        end = std::min(end, song_.transport[transport_ + 1].frame);

    Block block{at_, 0, event_, event_, false};
    while (block.endEvent < song_.events.size() && !block.loads) {
        const SongEvent& event = song_.events[block.endEvent];
        // What stands on the end frame opens the next block, unless no other comes.
        const bool isLast = end == endFrame_;
        if (event.frame > end || (event.frame == end && !isLast)) break;
        ++block.endEvent;
        block.loads = event.loads();
        const bool full = block.endEvent - block.firstEvent == mostEvents;
        if (block.loads || full) end = event.frame;
        if (full) break;
    }
    block.frames = static_cast<std::int32_t>(end - at_);
    at_ = end;
    event_ = block.endEvent;
    return block;
}

TimeInfo BlockPlan::timeAt(const Block& block) const {
    const Transport& transport = song_.transport[transport_];
    const MidiTempoMap::Stretch& stretch = transport.stretch;
    const double bar = stretch.signature.quartersPerBar();
    TimeInfo time;
    time.tempo = stretch.tempo;
    time.musicalPosition =
        std::max(0.0, transport.beatsAt(static_cast<double>(block.start) / song_.rate));
    const double bars = (time.musicalPosition - stretch.signatureBeats) / bar;
    time.barStart = stretch.signatureBeats + std::max(0.0, std::floor(bars + 1e-9)) * bar;
    time.timeSignatureNumerator = stretch.signature.numerator;
    time.timeSignatureDenominator = stretch.signature.denominator;
    time.flags = TimeInfo::playing | TimeInfo::positionValid | TimeInfo::tempoValid |
                 TimeInfo::barStartValid | TimeInfo::signatureValid;
    return time;
}

}  // namespace stratovane::render
