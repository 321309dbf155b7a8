#include "voice/drawbar/drawbar_voice.h"

#include <algorithm>
#include <cmath>

#include "voice/filter/start_filter.h"

namespace stratovane {
namespace {

constexpr double wheelRate = 44100;  // frames per second of every loop
constexpr float fastest = 4;         // frames per sample
constexpr float fullScale = 7.5e-9f;
constexpr float loudPercussion = 12000, softPercussion = 4000;
constexpr float nonePlayed = -0.5f;  // below: no key is held whose percussion could run on
constexpr float percussionFloor = 1e-8f;
constexpr int strongVelocity = 80;  // above: "+ Vel" strikes anew
constexpr int softVelocity = 10;    // below: the contacts close slowly
constexpr std::size_t secondHarmonicSlot = 2, thirdHarmonicSlot = 6;
constexpr std::uint16_t noiseStep = 91;

enum Trigger : int { normal, byVelocity, mono, poly };

int clickTicks(const DrawbarControls& controls) { return static_cast<int>(controls.clickSamples); }

}  // namespace

int drawbarKey(const ElementControls& controls, int note) {
    const float key = static_cast<float>(note - 60) * controls.pitchKeytrack +
                      static_cast<float>(controls.wholeSemitones) + 60.5f;
    return std::clamp(static_cast<int>(key), lowestDrawbarKey, highestDrawbarKey);
}

float drawbarPitch(const ToneWheels& wheels, int key, double outputRate) {
    return static_cast<float>(std::log(wheelRate / outputRate)) +
           static_cast<float>(60 - key) * semitonePitch + wheels.tuning;
}

void DrawbarVoice::start(const ElementControls& controls, const ToneWheels& wheels,
                         const DrawbarNote& note, double sampleRate, Random& random) {
    *this = DrawbarVoice{};
    const DrawbarControls& drawbar = controls.drawbar;
    key_ = note.key;
    mix_.start(wheels, key_, random);
    weights_ = foldedWeights(drawbar.bars, key_);
    scale_ = fullScale;
    startPercussion(drawbar, note, sampleRate);

    const int length = clickTicks(drawbar);
    clickTicks_ = note.velocity < softVelocity ? length + length / 2 : length;
    clickCoefficient_ =
        std::min(1.0f, static_cast<float>((200 * (key_ - 64) + 20000) / sampleRate));
    clickLevel_ = drawbar.clickLevel;
    noise_ = static_cast<std::uint16_t>(random.unipolar() * 0.2f * 65536);
    startDigitalFilter(filter_, controls, note.receivedVelocity);
}

void DrawbarVoice::startPercussion(const DrawbarControls& controls, const DrawbarNote& note,
                                   double sampleRate) {
    percussionDecay_ =
        static_cast<float>(std::exp(-std::exp(controls.fast ? 6.16 : 5.16) / sampleRate));
    thirdHarmonic_ = controls.third ? 1.0f : 0.0f;
    if (!controls.percussion) return;
    const float struck = controls.loud ? loudPercussion : softPercussion;
    const bool first = note.percussionHeld <= nonePlayed;
    switch (controls.percussionTrigger) {
        case byVelocity:
            percussion_ = first || note.velocity > strongVelocity ? struck : note.percussionHeld;
            break;
        case mono:
            percussion_ = first ? struck : 0;
            break;
        case poly:
            percussion_ = struck;
            break;
        default:
            percussion_ = first ? struck : note.percussionHeld;
            break;
    }
    if (controls.loud) scale_ *= 0.5f;
}

void DrawbarVoice::refresh(const ElementControls& controls) {
    weights_ = foldedWeights(controls.drawbar.bars, key_);
    filter_.setMode(controls.filterMode);
}

void DrawbarVoice::release(const ElementControls& controls) {
    released_ = true;
    releaseTicks_ = clickTicks(controls.drawbar);
    releaseLevel_ = controls.drawbar.offClick * controls.drawbar.clickLevel;
}

void DrawbarVoice::tick(float framesPerSample, const FilterInputs& filter) {
    mix_.setIncrement(static_cast<std::int32_t>(65536 * std::min(framesPerSample, fastest) + 0.5f));
    tickClick();
    tickPercussion();
    filter_.update(filter);
}

void DrawbarVoice::tickClick() {
    if (clickTicks_ != 0) {
        ++noise_;
        if (--clickTicks_ == 0) clickLevel_ = 0;
    }
    if (!released_) return;
    released_ = false;
    clickCoefficient_ *= 0.5f;
    clickTicks_ = releaseTicks_;
    clickLevel_ = releaseLevel_;
}

void DrawbarVoice::tickPercussion() {
    if (percussion_ < percussionFloor) percussion_ = 0;
    percussion_ *= percussionDecay_;
    const auto onThird = static_cast<std::int32_t>(percussion_ * thirdHarmonic_);
    const std::int32_t onSecond = static_cast<std::int32_t>(percussion_) - onThird;
    played_ = weights_;
    played_[thirdHarmonicSlot] += onThird;
    if (mix_.hasWheel(secondHarmonicSlot)) played_[secondHarmonicSlot] += onSecond;
}

void DrawbarVoice::render(float* y) {
    std::int32_t sums[tickFrames];
    mix_.render(played_, sums);
    for (int i = 0; i < tickFrames; ++i) y[i] = static_cast<float>(sums[i]) * scale_;
    if (clickTicks_ != 0) click(y);
    filterInput_ = y[tickFrames - 1];
    filter_.render(y, y);
}

/// Contacts that bounce: noise, smoothed, tears holes into the sound.
void DrawbarVoice::click(float* y) {
    for (int i = 0; i < tickFrames; ++i) {
        const float noise = static_cast<float>(int{noise_}) * (1.0f / 65536);
        clickState_ += (noise - clickState_) * clickCoefficient_;
        y[i] -= clickState_ * clickLevel_ * y[i];
        noise_ = static_cast<std::uint16_t>(std::uint32_t{noise_} * noiseStep);
    }
}

}  // namespace stratovane
