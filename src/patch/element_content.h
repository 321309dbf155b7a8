// What an element plays of the content library.
#pragma once

#include "content/content_data.h"
#include "content/content_kind.h"

namespace stratovane {

/// Made by the UI thread when a selection changes, never changed afterwards. A voice keeps the id,
/// so that nothing is released under it, and asks the slot at its note: the data may not be
/// resident yet.
struct ElementContent {
    ContentId id;
    const ItemSlot* slot = nullptr;

    template <class Data>
    const Data* get() const {
        return slot == nullptr ? nullptr : slot->get<Data>();
    }
};

}  // namespace stratovane
