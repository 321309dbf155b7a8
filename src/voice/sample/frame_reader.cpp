#include "voice/sample/frame_reader.h"

namespace stratovane {

// A zone may end before the point that was asked for; then the last frame before the end is found
// by decoding from the nearest point, at most a thirtieth of the sample away.
void DeltaReader::start(const SampleData& data, const FrameRange& range,
                        const DeltaState* loopStart, int point, std::int32_t frame) {
    const auto step = static_cast<std::size_t>(data.channels());
    while (point > 0 && SampleData::startFrame(data.frames(), point) > frame) --point;
    frame_ = frame;
    fraction_ = 0;
    for (int lane = 0; lane < data.channels(); ++lane) {
        Channel& c = channels_[lane];
        c.state = data.startState(point, lane);
        auto at = static_cast<std::size_t>(SampleData::startFrame(data.frames(), point));
        const auto goal = static_cast<std::size_t>(frame);
        for (; at < goal; ++at)
            c.state.advance(data.delta()[step * at + static_cast<std::size_t>(lane)]);
        decode(data.delta() + step * goal, range, loopStart, lane);
    }
}

}  // namespace stratovane
