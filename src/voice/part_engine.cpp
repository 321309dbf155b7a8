#include "voice/part_engine.h"

#include <algorithm>

#include "content/content_library.h"
#include "effects/effect_unit.h"
#include "voice/arpeggiator_log.h"
#include "voice/part_events.h"
#include "voice/part_mix.h"
#include "voice/part_output.h"
#include "voice/part_sends.h"
#include "voice/part_state.h"

namespace stratovane {

struct PartEngine::Impl {
    Impl(const EngineShared& engineShared, int partNumber, int pairs, std::uint32_t seed,
         ContentLibrary* content)
        : shared{engineShared},
          part{partNumber},
          outputPairs{pairs},
          library{content},
          state{engineShared, seed} {
        state.patch.setPlace({part, &keys, pairs, content});
        setRate(engineShared.sampleRate, engineShared.blockFrames);
    }

    void setRate(double rate, int maxFrames) {
        const int frames = std::max(maxFrames, 1);
        state.prepare(rate, frames);
        mix.prepare(frames);
        sends.prepare(frames);
    }

    void renderPiece(const RenderTarget& target, const BlockPlace& place);
    void playArpeggiator(const RenderTarget& target, int offset);
    void publishCount();
    void releaseOldest();
    /// Output pair, limited to those that the instance was made for.
    OutputSettings outputSettings() const {
        const PatchControls& patch = state.patch.controls();
        return {patch.gain * shared.masterGain, patch.pan, std::min(patch.output, outputPairs)};
    }

    const EngineShared& shared;
    const int part;
    const int outputPairs;
    ContentLibrary* const library;
    KeySource keys;  // before the patch, whose effects follow it
    PartState state;
    PartMix mix;
    PartSends sends;
    PartOutput output;
    bool sendsSounded = false;  // in the piece before
    bool silent = true;         // nothing sounds, nothing waits: until the next event
    Shared<std::int32_t> voiceCount{0};
    SharedBits highestCount;
};

PartEngine::PartEngine(const EngineShared& shared, int outputPairs, std::uint32_t seed, int part,
                       ContentLibrary* library)
    : impl_{std::make_unique<Impl>(shared, part, outputPairs, seed, library)} {}

PartEngine::~PartEngine() = default;

Patch& PartEngine::patch() { return impl_->state.patch; }
const Patch& PartEngine::patch() const { return impl_->state.patch; }

void PartEngine::setSampleRate(double rate, int maxFrames) {
    if (!(rate > 0)) return;
    if (rate != impl_->state.rate) {
        freeAllVoices();
        impl_->output.reset();
    }
    impl_->setRate(rate, maxFrames);
    impl_->state.patch.setSampleRate(rate);
}

void PartEngine::setTime(const MusicalTime& time) {
    impl_->state.time = time;
    impl_->state.patch.setTempo(time.tempo, time.beatsPerFrame);
}

void PartEngine::handleEvent(const MidiBytes& bytes, EventSource source) {
    // A parameter stored before this event acts on it.
    impl_->state.patch.applyMarked();
    handlePartEvent(impl_->state, bytes, source);
    impl_->silent = false;
    impl_->publishCount();
}

void PartEngine::render(const RenderTarget& target, int offset, int frames, double position) {
    PartState& state = impl_->state;
    const double beatsPerFrame = state.time.beatsPerFrame;
    state.patch.applyMarked();
    state.followLfos();
    for (int done = 0; done < frames;) {
        const int most = std::min(frames - done, impl_->mix.capacity());
        const double beat = position + done * beatsPerFrame;
        const int piece = state.arpeggiator.framesUntilNext(most, beat, state.score());
        if (piece > 0) impl_->renderPiece(target, {offset + done, piece, beat});
        state.arpeggiator.advance(piece, beatsPerFrame);
        done += piece;
        // What falls on the frame behind the last is for the next render.
        if (piece < most) impl_->playArpeggiator(target, offset + done);
    }
}

void PartEngine::Impl::playArpeggiator(const RenderTarget& target, int offset) {
    for (MidiBytes bytes; state.arpeggiator.take(bytes);) {
        if (target.log != nullptr) target.log->note({target.firstFrame + offset, part, bytes});
        handlePartEvent(state, bytes, EventSource::arpeggiator);
    }
    silent = false;
    state.followLfos();
    publishCount();
}

void PartEngine::Impl::renderPiece(const RenderTarget& target, const BlockPlace& place) {
    if (silent) return state.clock.skip(place.frames, state.controllers.pressure);
    state.clock.beginPiece(place.frames, state.controllers.pressure);
    keys.pitch = state.controllers.highestKeyPitch;
    const OutputSettings settings = outputSettings();
    const bool sounded = mix.render(state, {settings, target, sends}, place);
    state.clock.endPiece(place.frames);

    const bool sendsSoundedBefore = sendsSounded;
    if (sounded || sendsSoundedBefore) {
        const auto buffer = mix.buffer(place.frames);
        const StereoGain gain = PartOutput::wantedGains(settings);
        for (int k = 0; k < sendBusCount; ++k)
            sends.add(state.patch, k, state.patch.controls().sends[static_cast<std::size_t>(k)],
                      gain, buffer, target, place);
        output.add(buffer, settings, target, place.offset);
    }
    sendsSounded = sends.run(state.patch, target, place);
    silent = !sounded && !sendsSounded && !sendsSoundedBefore && state.slots.active() == 0 &&
             !state.arpeggiator.running();
    publishCount();
}

void PartEngine::freeAllVoices() {
    impl_->state.slots.freeAll();
    for (Voice& voice : *impl_->state.voices) voice.content = 0;
    impl_->silent = true;
    impl_->publishCount();
}

bool PartEngine::sounding() const { return !impl_->silent || impl_->state.arpeggiator.running(); }

void PartEngine::Impl::publishCount() {
    const int count = state.slots.active();
    voiceCount = count;
    std::uint32_t seen = highestCount.get();
    while (seen < static_cast<std::uint32_t>(count) &&
           !highestCount.replace(seen, static_cast<std::uint32_t>(count))) {
    }
}

int PartEngine::voiceCount() const { return impl_->voiceCount; }
int PartEngine::takeHighestVoiceCount() { return static_cast<int>(impl_->highestCount.take()); }
float PartEngine::takePeak() { return impl_->output.takePeak(); }

void PartEngine::idle() {
    impl_->state.patch.applyLoading();
    impl_->releaseOldest();
}

/// At most one piece of content a call: the oldest that no voice plays, once the render that may
/// just have started such a voice is over.
void PartEngine::Impl::releaseOldest() {
    WaitingReleases& waiting = state.patch.waitingReleases();
    if (waiting.empty() || library == nullptr) return;
    const WaitingRelease oldest = waiting.oldest();
    if (!shared.epoch.passed(oldest.stamp)) return;
    for (const Voice& voice : *state.voices)
        if (voice.content == oldest.id.word) return;
    waiting.removeOldest();
    library->release(oldest.id);
}
bool PartEngine::idleWaits() const { return impl_->state.patch.loadingWaits(); }

}  // namespace stratovane
