#include "effect_run.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <vector>

#include "base/units.h"
#include "effects/catalogue.h"
#include "effects/effect_unit.h"
#include "interrupt.h"
#include "progress.h"
#include "recording.h"
#include "sound_input.h"

namespace stratovane::render {

namespace {

// Before every unit of a block its first frame gets this, against denormal numbers.
constexpr float guard = 1e-6f;
// An automatic tail ends where no more is left than what feedback makes of the guard.
constexpr float quietest = 1e-5f;

class Chain {
  public:
    Chain(const Options& options, int rate)
        : beatsPerFrame_{static_cast<double>(options.tempo) / (60.0 * rate)} {
        if (options.key) keys_.pitch = static_cast<float>(*options.key) * semitonePitch;
        for (const EffectChoice& effect : options.effects) {
            auto& unit = units_.emplace_back(makeEffectUnit(effect.type));
            unit->setSeed(static_cast<std::uint32_t>(units_.size()));
            unit->setTempo(options.tempo, beatsPerFrame_);
            if (options.key) unit->setKeySource(&keys_);
            unit->setSampleRate(static_cast<float>(rate));
            for (int i = 0; i < effectParameters; ++i)
                unit->setParameter(i, effect.values[static_cast<std::size_t>(i)]);
        }
    }
    Chain(const Chain&) = delete;  // the units point at the keys
    Chain& operator=(const Chain&) = delete;

    /// `start`: the block's first frame, counted from the file's.
    void process(std::span<StereoFrame> block, std::int64_t start) {
        for (auto& unit : units_) {
            block.front().left += guard;
            block.front().right += guard;
            bool silent = false;
            unit->process(block, static_cast<double>(start) * beatsPerFrame_, silent);
        }
    }

  private:
    double beatsPerFrame_;
    KeySource keys_;
    std::vector<std::unique_ptr<EffectUnit>> units_;
};

/// Counts in `inputFrames` what the file really held.
std::optional<Failure> play(SoundInput& input, const Options& options, Take& take,
                            std::int64_t& inputFrames) {
    Chain chain{options, input.rate()};
    const std::int64_t tail = tailFrames(options, input.rate());
    Progress progress{input.frames() + tail, !options.quiet};
    std::vector<StereoFrame> block(static_cast<std::size_t>(options.blockFrames));
    std::int64_t end = std::numeric_limits<std::int64_t>::max();  // until the input ends
    for (std::int64_t at = 0; at < end;) {
        if (interruptSeen() != 0) return Failure{Exit::output, "interrupted; no file was written"};
        std::size_t read = 0;
        if (auto failure = input.read(block, read)) return failure;
        inputFrames += static_cast<std::int64_t>(read);
        if (read < block.size()) end = inputFrames + tail;
        std::fill(block.begin() + static_cast<std::ptrdiff_t>(read), block.end(), StereoFrame{});
        const std::int64_t frames = std::min(end - at, std::int64_t{options.blockFrames});
        if (frames == 0) break;
        const auto cut = std::span{block}.first(static_cast<std::size_t>(frames));
        chain.process(cut, at);
        if (auto failure =
                take.append({reinterpret_cast<const float*>(cut.data()), 2 * cut.size()}))
            return failure;
        at += frames;
        progress.show(at);
    }
    return {};
}

}  // namespace

std::variant<Summary, Failure> runEffects(const Options& options) {
    SoundInput input;
    if (auto failure = input.open(options.input)) return *failure;
    Summary summary;
    Recording recording{options, options.output, summary};
    Take& take = recording.take();
    if (auto failure =
            recording.open(input.rate(), 2, input.frames() + tailFrames(options, input.rate())))
        return *failure;

    const auto begun = std::chrono::steady_clock::now();
    std::int64_t inputFrames = 0;
    if (auto failure = play(input, options, take, inputFrames)) return *failure;
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begun;
    summary.fromSong = false;
    summary.inputSeconds = static_cast<double>(inputFrames) / input.rate();
    summary.invalidSamples = input.invalidSamples();
    summary.elapsedSeconds = elapsed.count();
    summary.renderedSeconds = static_cast<double>(take.frames()) / input.rate();

    if (options.tail == Options::Tail::automatic) {
        std::int64_t audible = 0;
        if (auto failure = recording.findAudibleFrames(quietest, audible)) return *failure;
        take.cutTo(std::max(audible, inputFrames));
    }
    if (auto failure = recording.write()) return *failure;
    if (auto failure = recording.commit()) return *failure;
    return summary;
}

}  // namespace stratovane::render
