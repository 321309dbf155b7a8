// The library's idle step.

#include <algorithm>
#include <limits>

#include "base/trace.h"
#include "content/content_library.h"

namespace stratovane {

namespace {

constexpr ContentKind loadedKinds[] = {ContentKind::samples, ContentKind::wavetables,
                                       ContentKind::tunings, ContentKind::drawbars};
constexpr std::int32_t loading = 1;

std::int32_t limited(std::int64_t bytes) {
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(bytes, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

std::int32_t ContentLibrary::idle() {
    if (disposing_.step(
            [this](std::uint32_t stamp) { return !renderPassed_ || renderPassed_(stamp); }) &&
        traces_)
        trace_.write(TraceLevel::content, "memory/fx dispose");
    if (changes_ == done_) return limited(loader_.memoryInUse);
    const std::uint32_t changes = changes_;
    const std::int64_t before = loader_.memoryInUse;
    int did = 0;
    for (int number = 0; number < banksPerKind; ++number)
        for (const ContentKind kind : loadedKinds)
            if (ContentBank* bank = find(kind, number); bank && bank->requests != bank->done)
                did |= runBankStep(*bank, loader_, trace_);
    loader_.memoryInUse = std::max<std::int64_t>(loader_.memoryInUse, 0);
    ++loader_.pass;
    if (did == 0) {
        done_ = changes;
        if (traces_) trace_.write(TraceLevel::content, "memory = %d", limited(loader_.memoryInUse));
        return limited(loader_.memoryInUse);
    }
    return loader_.memoryInUse >= before ? loading : limited(loader_.memoryInUse);
}

void ContentLibrary::setPreloadMode(int mode) {
    loader_.keepItems = mode == preloadFull;
    if (!loader_.keepItems) ++changes_;
}

}  // namespace stratovane
