// What an item is once it is in memory, and the slot through which voices find it.
#pragma once

#include <cstdint>

#include "base/published.h"
#include "content/content_kind.h"

namespace stratovane {

/// A parsed item. Made and destroyed by the UI thread, never changed while it is published except
/// where a member says so.
struct ContentData {
    ContentData() = default;
    ContentData(const ContentData&) = delete;
    ContentData& operator=(const ContentData&) = delete;
    virtual ~ContentData() = default;
};

/// The place of an item's resident data. It stays where it is from the scan to the close of the
/// library, so an element keeps a plain pointer to it and asks at every note.
class ItemSlot {
  public:
    explicit ItemSlot(ContentKind kind) : kind_{kind} {}

    /// The item, while it is resident and of this kind. Any thread.
    template <class Data>
    const Data* get() const {
        return Data::kind == kind_ ? static_cast<const Data*>(data_.read()) : nullptr;
    }
    /// UI thread.
    void publish(const ContentData* data) { data_.publish(data); }
    bool empty() const { return data_.read() == nullptr; }

  private:
    const ContentKind kind_;
    Published<const ContentData> data_;
};

/// Why an item was refused.
struct ContentFault {
    std::uint64_t offset = 0;   // from the item's first byte
    const char* sentence = "";  // what is wrong there; a literal
};

}  // namespace stratovane
