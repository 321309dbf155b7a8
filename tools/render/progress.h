// A progress bar on a terminal.
#pragma once

#include <chrono>
#include <cstdint>

namespace stratovane::render {

/// Draws on standard error, at most ten times a second and only when that is a terminal.
class Progress {
  public:
    Progress(std::int64_t total, bool wanted);
    ~Progress();  // wipes the bar
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void show(std::int64_t done);

  private:
    std::int64_t total_;
    bool drawing_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point next_;
};

}  // namespace stratovane::render
