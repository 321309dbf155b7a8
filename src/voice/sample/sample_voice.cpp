#include "voice/sample/sample_voice.h"

#include <algorithm>

#include "voice/filter/start_filter.h"

namespace stratovane {
namespace {

constexpr float fastest = 16;  // frames per sample

}  // namespace

void SampleVoice::start(const ElementControls& controls, float velocity, const ZoneChoice& choice,
                        int startPoint) {
    *this = SampleVoice{};
    choice_ = choice;
    const SampleData& data = *choice.data;
    range_ = {choice.zone->playedFrames(data), choice.zone->playedLoop(data)};
    lanes_ = data.channels() == 2 && !controls.sample.forceMono ? 2 : 1;
    loopTune_ = choice.zone->loopTuneSemitones;

    const std::int32_t frame =
        std::min(SampleData::startFrame(data.frames(), startPoint), range_.end - 1);
    position_.frame = frame;
    if (data.format() == SampleFormat::delta)
        delta_.start(data, range_, choice.zone->loopStart.data(), startPoint, frame);

    startDigitalFilter(filter_, controls, velocity);
    filter_.useBothChannels(isStereo());
}

void SampleVoice::tick(float framesPerSample, const FilterInputs& filter) {
    framesPerSample_ = double(std::min(framesPerSample, fastest));
    filter_.update(filter);
}

void SampleVoice::render(float* left, float* right) {
    float* const out[2] = {left, right};
    read(out);
    filterInput_ = left[tickFrames - 1];
    for (int lane = 0; lane < lanes_; ++lane) filter_.render(out[lane], out[lane], lane);
}

void SampleVoice::read(float* const* out) {
    const SampleData& data = *choice_.data;
    switch (data.format()) {
        case SampleFormat::pcm16:
            return readValues(data.pcm16(), out);
        case SampleFormat::float32:
            return readValues(data.float32(), out);
        case SampleFormat::delta:
            break;
    }
    const DeltaState* loopStart = choice_.zone->loopStart.data();
    if (isStereo())
        delta_.read<2>(data, range_, loopStart, position_, framesPerSample_, out);
    else
        delta_.read<1>(data, range_, loopStart, position_, framesPerSample_, out);
}

template <class Value>
void SampleVoice::readValues(const Value* values, float* const* out) {
    if (isStereo())
        readPcm<2, 2>(values, range_, position_, framesPerSample_, out);
    else if (choice_.data->channels() == 2)
        readPcm<2, 1>(values, range_, position_, framesPerSample_, out);
    else
        readPcm<1, 1>(values, range_, position_, framesPerSample_, out);
}

float SampleVoice::takeLoopTune() {
    if (!position_.wrapped) return 0;
    const float semitones = loopTune_;
    loopTune_ = 0;
    position_.wrapped = false;
    return semitones;
}

}  // namespace stratovane
