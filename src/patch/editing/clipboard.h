// What was copied last: an element or send slot, and a patch's own values.
#pragma once

#include <array>
#include <string>

#include "content/program_files.h"
#include "patch/element_controls.h"
#include "patch/patch.h"

namespace stratovane {

/// Values of a newly made element.
ElementValues freshElementValues();

/// Plain values; they live as long as the instrument. UI thread.
struct Clipboard {
    std::string elementName{"Effect"};
    ElementValues element = freshElementValues();
    std::string patchName{};
    std::array<float, globalParameters> patch;
    /// The patch type that suits the element: of its patch for "Sample" and "Analog", 3 for
    /// "Drawbar", else 0.
    int typeHint = 0;

    Clipboard();
    ElementType type() const;

    /// Takes an element 1..count or 65..68, or for 0 the patch's own values. False, and nothing
    /// changed, for others.
    bool copy(const Patch& from, int number);
    /// Overwrites an element 1..count or send slot 65..68, which takes effects alone. A patch
    /// without a name gets one and a level that can be heard; its type follows the hint. For 0 only
    /// the arpeggiator's steps are pasted. False, and nothing changed, for others.
    bool paste(Patch& into, int number) const;

  private:
    void pasteElement(Patch& into, int number) const;
};

}  // namespace stratovane
