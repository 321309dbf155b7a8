// Keeps the host from coming in again through a message box.
#pragma once

#include <utility>

namespace stratovane {

/// Marks a stay inside an operation that may open a message box, while which the host goes on
/// calling. Operations may use one another. UI thread.
class Stay {
  public:
    explicit Stay(bool& inside) : inside_{inside}, before_{std::exchange(inside, true)} {}
    ~Stay() { inside_ = before_; }
    Stay(const Stay&) = delete;
    Stay& operator=(const Stay&) = delete;

  private:
    bool& inside_;
    bool before_;
};

}  // namespace stratovane
