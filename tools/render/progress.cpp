#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace stratovane::render {

namespace {
constexpr int barColumns = 50;
constexpr std::chrono::milliseconds pause{100};
}  // namespace

Progress::Progress(std::int64_t total, bool wanted)
    : total_{std::max<std::int64_t>(total, 1)},
      drawing_{wanted && isatty(STDERR_FILENO) == 1},
      next_{std::chrono::steady_clock::now() + pause} {}

Progress::~Progress() {
    if (drawn_) std::fprintf(stderr, "\r%*s\r", barColumns + 10, "");
}

void Progress::show(std::int64_t done) {
    if (!drawing_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + pause;
    drawn_ = true;
    const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
    const auto filled = static_cast<std::size_t>(share * barColumns);
    std::string bar(filled, '#');
    bar.resize(barColumns, '.');
    std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), static_cast<int>(share * 100));
}

}  // namespace stratovane::render
