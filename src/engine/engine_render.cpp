// Rendering a block: parts with their events, output enhancer, overload guard.

#include <algorithm>
#include <cmath>
#include <span>

#include "engine/engine.h"
#include "engine/transport.h"
#include "voice/send_effects.h"

namespace stratovane {

namespace {

constexpr MidiBytes bytesOf(const EventRecord& event) {
    return {static_cast<std::uint8_t>(event.status & 0xF0), event.data1, event.data2, event.extra};
}

}  // namespace

RenderTarget Engine::target() {
    return {buffers_.data(), touched_.data(), pairs_, sends_.data(), &log_, rendered_};
}

void Engine::handleEvent(int part, const EventRecord& event) {
    constexpr std::uint8_t programChange = 0xC0;
    const MidiBytes bytes = bytesOf(event);
    if (bytes[0] == programChange) return memory(part).forget();
    memory(part).note(bytes);
    ChainNode* head = chain(part).head();
    head->instance->handleEvent(bytes, EventSource::host);
    if (bytes[0] == 0x90) return;  // a new note is the current patch's alone
    for (ChainNode* node = head->older; node != nullptr; node = node->older)
        node->instance->handleEvent(bytes, EventSource::host);
}

void Engine::render(const RenderBlock& block, Transport& transport) {
    const RenderEpoch::Stay stay{shared_.epoch};
    if (transport.time().changes != 0) {
        shared_.tempo = transport.time().tempo;
        master_.setTempo(transport.time().tempo, transport.time().beatsPerFrame);
    }
    for (int part = 0; part < parts; ++part) {
        PlayingChain& playing = chain(part);
        const ChainNode* adopted = playing.adopt();
        if (adopted == nullptr && transport.time().changes == 0) continue;
        for (ChainNode* node = playing.head(); node != nullptr; node = node->older)
            node->instance->setTime(transport.time());
        if (adopted != nullptr && adopted->forMessage) memory(part).applyTo(*adopted->instance);
    }
    master_.applyMarked();
    if (freeVoices_) {
        freeVoices_ = false;
        for (auto& chain : chains_)
            for (ChainNode* node = chain->head(); node != nullptr; node = node->older)
                node->instance->freeAllVoices();
    }
    nextEvent_.fill(0);
    retiringRenders_ = 0;
    // A block beyond the announced size is rendered in pieces of that size.
    std::int32_t from = 0;
    bool overloaded = false;
    do {
        const std::int32_t frames = std::min(block.frames - from, blockFrames_);
        const bool last = from + frames == block.frames;
        overloaded |= !renderPiece(block, from, frames, transport.time(), last);
        transport.advance(frames);
        rendered_ += frames;
        from += frames;
    } while (from < block.frames);
    int voices = 0;
    for (auto& chain : chains_) {
        chain->retireLast(dead_, blocks_ + keepDeadBlocks,
                          [this](const PartEngine& instance, bool first) {
                              return !instance.sounding() || retireAll_ > 0 || !first;
                          });
        for (ChainNode* node = chain->head(); node != nullptr; node = node->older)
            voices += node->instance->voiceCount();
    }
    if (voices > highestVoices_) highestVoices_ = voices;
    if (overloaded) return;
    if (retireAll_ > 0) retireAll_ = retireAll_ - 1;
    blocks_ = blocks_ + 1;
    retiringCount_ = retiringRenders_;
}

bool Engine::renderPiece(const RenderBlock& block, std::int32_t from, std::int32_t frames,
                         const MusicalTime& time, bool last) {
    for (std::size_t i = 0; i < buffers_.size(); ++i) std::fill_n(buffers_[i], frames, 0.0f);
    std::fill(touched_.begin(), touched_.end(), std::uint8_t{0});
    for (int part = 0; part < parts; ++part)
        renderPart(part, (*block.events)[static_cast<std::size_t>(part)], from, frames, time, last);
    runSendEffects(master_, sends_, sends_.data(), 0, target(), {0, frames, time.position});
    return finishPiece(block, from, frames);
}

void Engine::renderPart(int part, const PartEvents& events, std::int32_t from, std::int32_t frames,
                        const MusicalTime& time, bool last) {
    PlayingChain& playing = chain(part);
    std::int32_t done = 0;
    auto renderTo = [&](std::int32_t end) {
        if (end <= done) return;
        const double position = time.position + done * time.beatsPerFrame;
        ChainNode* head = playing.head();
        for (ChainNode* node = head->older; node != nullptr; node = node->older)
            node->instance->render(target(), done, end - done, position);
        head->instance->render(target(), done, end - done, position);
        done = end;
    };
    // Everything up to an event's frame is rendered, the retiring instances too; then both get it.
    std::size_t& next = nextEvent_[static_cast<std::size_t>(part)];
    for (; next < static_cast<std::size_t>(events.size()); ++next) {
        const EventRecord& event = events.begin()[next];
        if (event.frame >= from + frames && !last) break;
        renderTo(std::min(event.frame - from, frames));
        handleEvent(part, event);
    }
    renderTo(frames);
    if (!last) return;
    for (ChainNode* node = playing.head()->older; node != nullptr; node = node->older)
        ++retiringRenders_;
}

bool Engine::overloaded(std::int32_t frames) const {
    constexpr std::int32_t lookedAt = 4;
    constexpr float limit = 100.0f;
    for (std::size_t output = 0; output < 2; ++output)
        for (std::int32_t i = 0; i < std::min(frames, lookedAt); ++i)
            if (!(std::fabs(buffers_[output][i]) < limit)) return true;  // not a number included
    return false;
}

bool Engine::finishPiece(const RenderBlock& block, std::int32_t from, std::int32_t frames) {
    const bool silence = overloaded(frames);
    if (silence) {
        lift_.clear();
        freeVoices_ = true;
        renewEffects_.set(1);
        if (!overloadReported_) {
            trace_.later(TraceLevel::warning, "Overload!");
            overloadReported_ = true;
        }
    }
    const auto count = static_cast<std::size_t>(frames);
    for (std::size_t i = 0; i < buffers_.size(); ++i) {
        const std::span<float> rendered{buffers_[i], count};
        if (silence)
            std::fill(rendered.begin(), rendered.end(), 0.0f);
        else if (touched_[i] != 0 && lift_.on())
            lift_.process(static_cast<int>(i), rendered);
        float* out = block.outputs == nullptr ? nullptr : block.outputs[i];
        if (out == nullptr) continue;
        out += from;
        if (block.replace)
            std::copy(rendered.begin(), rendered.end(), out);
        else
            for (std::size_t k = 0; k < count; ++k) out[k] += rendered[k];
    }
    return !silence;
}

}  // namespace stratovane
