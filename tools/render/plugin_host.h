// The host's side of the boundary: one loaded plug-in instance.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "content/bytes.h"
#include "effect_choice.h"
#include "failure.h"
#include "midi_song.h"
#include "mrx/effect_record.h"
#include "mrx/events.h"
#include "mrx/opcodes.h"

namespace stratovane::render {

/// Tells what the plug-in would show in message boxes on standard error, but for what explains a
/// refusal. Everything runs on one thread, which is audio thread and UI thread in turn.
class PluginHost {
  public:
    PluginHost() = default;
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    std::optional<Failure> load(const std::string& path);
    /// Fixes rate and largest block and gets the plug-in ready, content loaded.
    void start(int rate, std::int32_t blockFrames);
    /// Puts an effect behind the patch of a part (0..15); false when there is no place for it.
    bool addEffect(int part, EffectChoice effect);
    int outputs() const { return record_->outputCount; }
    int parameters() const { return record_->parameterCount; }
    float parameter(std::int32_t index) { return record_->getParameter(record_, index); }
    void setParameter(std::int32_t index, float value) {
        record_->setParameter(record_, index, value);
    }
    /// A text the plug-in answers, as UTF-8 without blanks at its ends.
    std::string text(Opcode opcode, std::int32_t index = 0);

    /// Hands over events in a block of no frames and lets the plug-in load what they ask for.
    void deliver(std::span<const SongEvent> events);
    /// Chooses the part (0..15) whose preset chunks are meant.
    void selectPart(int part);
    /// Gives the plug-in a state, a preset's for the selected part; answers why it was refused.
    std::optional<std::string> setChunk(ByteView chunk, bool preset);
    /// Empty when there is nothing to give.
    Bytes getChunk(bool preset);

    /// Hands over the events of a block that begins at `start` and renders it. The outputs' samples
    /// stay valid until the next block.
    void render(std::span<const SongEvent> events, std::int64_t start, std::int32_t frames,
                const TimeInfo& time);
    std::span<float* const> buffers() const { return pointers_; }

    /// One idle call.
    void idle();
    /// Idle calls until nothing waits to be loaded.
    void settle();
    /// The highest number of voices since last asked; 0 when the plug-in does not tell.
    int highestVoices();
    /// Whether the plug-in never got ready, although it had a minute.
    bool stuck() const { return stuck_; }

    std::intptr_t request(Opcode opcode, std::int32_t index = 0, std::intptr_t value = 0,
                          void* pointer = nullptr, float number = 0);

  private:
    static std::intptr_t callback(EffectRecord* record, std::int32_t opcode, std::int32_t index,
                                  std::intptr_t value, void* pointer, float number);
    /// Lets the plug-in load what it was asked for and take it over.
    void takeOver();
    void sendEvents(std::span<const SongEvent> events, std::int64_t start);

    void* library_ = nullptr;
    EffectRecord* record_ = nullptr;
    bool running_ = false;
    bool stuck_ = false;
    TimeInfo time_;
    std::vector<std::vector<float>> samples_;
    std::vector<float*> pointers_;
    std::vector<MidiEvent> midi_;
    std::vector<SystemExclusiveEvent> exclusive_;
    std::vector<std::intptr_t> list_;  // an event list: head, then as many pointers as needed
};

}  // namespace stratovane::render
