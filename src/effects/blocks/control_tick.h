// When modulators are evaluated.
#pragma once

namespace stratovane {

/// Counts down to the next tick and lives across blocks. After `reset` the first tick comes before
/// the first sample.
class ControlTick {
  public:
    void reset() { left_ = 1; }
    /// Once a sample; true when a tick is due now, every `samples` samples.
    bool due(int samples) {
        if (--left_ > 0) return false;
        left_ = samples;
        return true;
    }

  private:
    int left_ = 1;
};

}  // namespace stratovane
