#include "engine/engine.h"

#include "engine/transport.h"
#include "voice/analog/impulse_table.h"

namespace stratovane {

Engine::Engine(EngineShared& shared, Trace& trace, int outputPairs, ContentLibrary* library)
    : shared_{shared},
      trace_{trace},
      pairs_{outputPairs},
      library_{library},
      seeds_{20051004},
      master_{shared} {
    prepareImpulseTable();
    for (int part = 0; part < parts; ++part) {
        auto instance = makeInstance(part);
        if (part == 0) instance->patch().makeSawtooth();
        instance->patch().handOver();
        chains_[static_cast<std::size_t>(part)] =
            std::make_unique<PlayingChain>(std::move(instance));
    }
    master_.setPlace({.part = parts, .outputPairs = pairs_});
    master_.setText(1, "Effect");
    master_.handOver();
    setSampleRate(static_cast<double>(shared.sampleRate.get()), blockFrames_);
}

Engine::~Engine() = default;

std::unique_ptr<PartEngine> Engine::makeInstance(int part) {
    auto instance = std::make_unique<PartEngine>(shared_, pairs_, seeds_.seed(), part, library_);
    instance->setSampleRate(static_cast<double>(shared_.sampleRate.get()), blockFrames_);
    return instance;
}

void Engine::adopt(int part, std::unique_ptr<PartEngine> instance, AskedBy by) {
    constexpr int latch = 18;  // a latched arpeggio of the outgoing patch must end
    patch(part).store(0, latch, 0.0f);
    instance->patch().handOver();
    chain(part).append(std::move(instance), by == AskedBy::message);
    patch(part).refreshTuning();  // which may have moved while the instance was filled
}

void Engine::setSampleRate(double rate, std::int32_t blockFrames) {
    shared_.sampleRate = static_cast<float>(rate);
    shared_.blockFrames = blockFrames;
    blockFrames_ = blockFrames;
    const auto frames = static_cast<std::size_t>(blockFrames);
    const auto outputs = static_cast<std::size_t>(2 * pairs_);
    samples_.assign(outputs * frames, 0.0f);
    buffers_.resize(outputs);
    for (std::size_t i = 0; i < outputs; ++i) buffers_[i] = samples_.data() + i * frames;
    touched_.assign(outputs, 0);
    for (SendBus& bus : sends_) bus.prepare(blockFrames);
    master_.setSampleRate(rate);
    for (auto& chain : chains_)
        chain->forEach([&](PartEngine& instance) { instance.setSampleRate(rate, blockFrames); });
    lift_.clear();
    overloadReported_ = false;
    retireAll_ = 0;
    freeVoices_ = false;
}

void Engine::setLift(float amount) {
    overloadReported_ = false;
    shared_.liftCompensation = lift_.set(amount, shared_.sampleRate);
}

void Engine::allSoundOff(int part) {
    for (ChainNode* node = chain(part).head(); node != nullptr; node = node->older)
        node->instance->handleEvent({0xB0, 120, 0, 0}, EventSource::host);
}

void Engine::idle() {
    // What waits to be loaded has waited long enough, whichever part's turn it is.
    for (auto& chain : chains_) chain->current().patch().applyLoading();
    master_.applyLoading();
    idlePart_ = (idlePart_ + 1) % parts;
    current(idlePart_).idle();
    if (renewEffects_.take() != 0) {
        // What overloaded may still ring in an effect.
        for (auto& chain : chains_) chain->current().patch().renewEffects();
        master_.renewEffects();
    }
    shared_.retired.tick(shared_.epoch);
    // All that may go: a combi leaves sixteen at once.
    while (dead_.deleteOldest(blocks_))
        trace_.write(TraceLevel::patch, "Engine::idle() - deleting old patch");
    if (const std::int32_t retiring = retiringCount_; retiring != tracedRetiring_) {
        tracedRetiring_ = retiring;
        trace_.write(TraceLevel::patch, "%d dead patches", retiring);
    }
}

bool Engine::busy() const {
    for (const auto& chain : chains_)
        if (chain->current().idleWaits()) return true;
    return master_.loadingWaits();
}

int Engine::takeHighestVoices() {
    const int highest = highestVoices_;
    highestVoices_ = 0;
    return highest;
}

}  // namespace stratovane
