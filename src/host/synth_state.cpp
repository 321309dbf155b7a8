// State chunks, and what the whole setup asks of the host.

#include "engine/engine.h"
#include "host/synth.h"
#include "persistence/stay.h"

namespace stratovane {

std::int32_t Synth::getChunk(void** data, bool preset) {
    if (inside_) return 0;
    const Stay stay{inside_};
    trace_.write(TraceLevel::lifecycle, "getChunk(%s)", preset ? "preset" : "bank");
    lazyInit("getChunk");
    *data = nullptr;
    chunk_ = Bytes{};
    chunk_ = preset ? chunkWriter_.preset(*engine_, selectedPart_) : chunkWriter_.bank(*engine_);
    if (!chunk_.empty()) *data = chunk_.data();
    return static_cast<std::int32_t>(chunk_.size());
}

std::int32_t Synth::setChunk(const void* data, std::int32_t size, bool preset) {
    if (inside_) return 0;
    const Stay stay{inside_};
    lazyInit("setChunk");
    const ByteView chunk{
        std::span{static_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size)}};
    const auto wanted = preset ? ChunkReader::Wanted::preset : ChunkReader::Wanted::bank;
    return chunkReader_.read(*engine_, chunk, {.wanted = wanted, .part = selectedPart_}) ? 1 : 0;
}

void Synth::partsChanged() {
    if (settings_.updateDisplay == 2 || (settings_.updateDisplay == 1 && !transport_.playing()))
        callHost(HostRequest::updateDisplay);
}

void Synth::libraryChanged() { updateMidiLists(); }

}  // namespace stratovane
