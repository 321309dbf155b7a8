#include "patch/editing/element_order.h"

#include "patch/patch.h"

namespace stratovane {

namespace {

void copyElement(Patch& patch, int from, int to) {
    patch.setText(to, patch.text(from));
    for (int i = 0; i < elementParameters; ++i) patch.recall(to, i, patch.get(from, i));
}

}  // namespace

bool hasRoom(const Patch& patch, int element) {
    const int count = patch.elementCount();
    return element >= 1 && element <= count + 1 && count + 1 < maxElements;
}

void makeRoom(Patch& fresh, int element) {
    const int count = fresh.elementCount();
    fresh.setElementCount(count + 1);
    for (int number = count; number >= element; --number) copyElement(fresh, number, number + 1);
}

void removeElement(Patch& fresh, int element) {
    const int count = fresh.elementCount();
    for (int number = element; number < count; ++number) copyElement(fresh, number + 1, number);
    fresh.setElementCount(count - 1);
}

}  // namespace stratovane
