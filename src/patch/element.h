// One layer of a patch: 256 stored values and what they mean.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/published.h"
#include "base/shared.h"
#include "patch/element_content.h"
#include "patch/element_controls.h"
#include "patch/knob_slots.h"

namespace stratovane {

class EffectUnit;
class Patch;

/// Effect number that stands for none.
inline constexpr int noEffect = 128;

/// Threads as for Patch, which owns it.
class Element {
  public:
    Element();
    ~Element();
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    /// As the engine plays it; types from 6 on make no sound. Owner of the controls.
    ElementType type() const { return type_; }
    const ElementControls& controls() const { return controls_; }
    /// Normalised, `index` 0..255. Any thread.
    float stored(int index) const { return values_[static_cast<std::size_t>(index)]; }
    /// Bumped when voices must notice (pitch, filter, wave, modulation). Owner of the controls.
    std::uint32_t changes() const { return changes_; }

    /// The effect of an "Effect" element; null without one. Audio thread.
    EffectUnit* unit() const { return unit_.read(); }

    /// The content it selects; null without any. Audio thread.
    const ElementContent* content() const { return content_.read(); }

    // Playing state that outlives voices; audio thread.
    std::uint32_t noteCounter = 0;  // notes that reached the element
    float lastPitch = 0;            // where the next glide starts

  private:
    friend class Patch;
    friend struct ElementScope;

    void apply(int index);
    void applyAll();
    float routed(int index) const;
    void followSlot(int slot);
    void connectSlot(int slot, int knob);
    void knobTurned(int knob, float position);
    void feedSlot(int slot, float position);
    void editRow(int row);
    void recompileRows();
    RowContext rowContext() const;
    void reapplyMacroReaders();
    void changeType(ElementType to);

    /// The effect that the stored values ask for, or none. UI thread (builder before hand-over).
    int wantedUnit() const;
    void refreshUnit();
    void renewUnit();
    /// The content that the stored values ask for; no item when there is none. UI thread as above.
    struct Selection {
        ContentKind kind = ContentKind::samples;
        PackedItem item;
        bool operator==(const Selection&) const = default;
    };
    Selection wantedContent() const;
    void refreshContent();
    void releaseContent();

    Patch* patch_ = nullptr;
    int number_ = 0;  // 1..68
    std::array<Shared<float>, 256> values_;
    ElementType type_ = ElementType::effect;
    ElementControls controls_;
    KnobSlots knobs_;
    std::uint32_t changes_ = 0;

    Published<EffectUnit> unit_;
    std::unique_ptr<EffectUnit> ownedUnit_;  // UI thread, as the two below
    int unitType_ = noEffect;
    std::uint32_t unitsMade_ = 0;
    Published<const ElementContent> content_;
    std::unique_ptr<const ElementContent> ownedContent_;
    Selection selected_;
};

}  // namespace stratovane
