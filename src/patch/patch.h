// A playable sound: global parameters, 64 elements, four send-effect slots, a controller map.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "base/engine_shared.h"
#include "base/published.h"
#include "base/shared.h"
#include "base/text_out.h"
#include "content/content_data.h"
#include "content/waiting_releases.h"
#include "patch/arpeggiator_settings.h"
#include "patch/parameter_marks.h"
#include "patch/patch_controls.h"
#include "patch/patch_place.h"

namespace stratovane {

class Element;
class PatchTexts;
class SceneTable;
struct Phrase;
struct Scene;

inline constexpr int maxElements = 64;
inline constexpr int sendSlots = 4;
inline constexpr int firstSendSlot = 65;                      // elements 65..68
inline constexpr int elementTotal = maxElements + sendSlots;  // numbered 1..68
inline constexpr int globalParameters = 252;
inline constexpr int elementParameters = 256;

/// Element number and index packed as in controller maps: element * 256 + index, 0xFFFF none.
using ParameterId = std::uint16_t;
inline constexpr ParameterId noParameter = 0xFFFF;

/// Threads. Stored values are shared: any thread reads and `store`s them. Converted values
/// (controls()) have one owner: the builder until `handOver`, then the audio thread, which applies
/// what others stored at the start of a render (`applyMarked`) and what it sets itself at once
/// (`set`). Rows that load, free or build are first done by the UI thread (`applyLoading`), which
/// then marks them for the owner like any other. Texts belong to the UI thread.
/// Invariants: every converted value follows from stored values alone, so applying a row again
/// changes nothing ("Current Scene" alone acts when it is set); names and displays read stored
/// values only.
class Patch {
  public:
    explicit Patch(const EngineShared& shared);
    ~Patch();
    Patch(const Patch&) = delete;
    Patch& operator=(const Patch&) = delete;

    /// Stores a normalised value and marks it for its owner; before hand-over applies it at once.
    /// `element` 0 is the patch, 1..64 its elements, 65..68 its send slots; others, and global
    /// indices from 252 on, change nothing. Values outside 0..1 go to the nearer end, what is not a
    /// number to 0. Also remembers the parameter for MIDI learn and disarms it. Any thread.
    void store(int element, int index, float value);
    /// As `store`, but applied at once (rows that load: by the next applyLoading). Owner: audio
    /// thread.
    void set(int element, int index, float value);
    /// As `store` and `set`, for what the instrument changes itself (scenes, knobs, editing): the
    /// parameter changed last and MIDI learn stay as they are.
    void recall(int element, int index, float value);
    void recallNow(int element, int index, float value);
    /// The stored value; 0 for what does not exist. Any thread.
    float get(int element, int index) const;

    /// Applies what was stored since: globals first, then elements, by index. Audio thread.
    void applyMarked();
    /// Does what rows that load, free or build content or effects need, then marks them for the
    /// owner. UI thread, outside a render of this patch.
    void applyLoading();
    /// Whether applyMarked or applyLoading has something to do. Any thread.
    bool waits() const;
    /// Whether applyLoading has something to do. Any thread.
    bool loadingWaits() const { return loading_.any(); }
    /// From now on the audio thread owns the converted values. Builder.
    void handOver() { live_ = true; }
    /// Recomputes everything that depends on the rate in hertz. Nothing may render meanwhile.
    void setSampleRate(double rate);
    double sampleRate() const { return rate_; }
    /// Builder, before anything is set.
    void setPlace(const PatchPlace& place) { place_ = place; }
    int outputPairs() const { return place_.outputPairs; }
    /// Where a tuning table (0 or 1) is; null for equal temperament. Audio thread.
    const ItemSlot* tuning(int slot) const {
        return tunings_[static_cast<std::size_t>(slot)].read();
    }
    /// Content no longer selected, to be released when no voice plays it. UI thread.
    WaitingReleases& waitingReleases() { return waitingReleases_; }
    /// Hands the tempo to the effects and recompiles the modulation rows that follow it. Owner.
    void setTempo(float beatsPerMinute, double beatsPerSample);
    /// Replaces every effect by a fresh one with the same settings. UI thread.
    void renewEffects();
    /// Everything that is stored, texts and controller map of another patch. Builder.
    void copyFrom(const Patch& other);
    /// Re-applies "Fine Tune" after the engine-wide tuning changed. Any thread.
    void refreshTuning();

    /// Name and display texts; empty for what does not exist. Any thread but while texts are
    /// changed.
    void showName(TextOut& out, int element, int index) const;
    void showValue(TextOut& out, int element, int index) const;
    void showValue(TextOut& out, int element, int index, float value) const;

    /// Texts by selector: 0 name, 1..68 element names, -6..-1 knob names 1..6, -7, -8, -10 the text
    /// fields 2, 3, 1 and -9 the library codes. Cut to the field. UI thread.
    std::string_view text(int selector) const;
    void setText(int selector, std::string_view text);
    std::string_view name() const { return text(0); }
    std::string_view knobName(int knob) const { return text(knob - 7); }  // knob 1..6

    /// Owner: audio thread (builder before hand-over).
    const PatchControls& controls() const { return controls_; }
    /// Elements 1..68.
    Element& element(int number);
    const Element& element(int number) const;
    int elementCount() const { return elementCount_; }
    /// Numbers of the "Effect" elements 1..elementCount, ascending. Owner of the controls.
    std::span<const std::uint8_t> effectElements();
    /// Elements beyond the count stay muted and nameless. Builder.
    void setElementCount(int count);
    /// Fills an element with the defaults of a type and names it after the type; of a send slot,
    /// only "Effect". Others than 1..count and 65..68 change nothing. UI thread.
    void initElement(int number, ElementType type);
    /// Takes what all types have from `common` instead of the defaults.
    void initElement(int number, ElementType type,
                     std::span<const float, elementParameters> common);
    /// The patch of a fresh part 1: one plain analog voice. Builder.
    void makeSawtooth();

    /// Phrase and scenes as stored. Writing to the table itself is the builder's. UI thread.
    SceneTable& scenes() { return *scenes_; }
    const SceneTable& scenes() const { return *scenes_; }
    /// Puts a record into a slot 0..63; the arpeggiator goes on with its phrase if it played what
    /// stood there before. UI thread.
    void putScene(int slot, std::shared_ptr<const Scene> record);
    enum class Recall { values, nothing };
    /// Makes a filled slot the current scene: recalls the values that its flags name and hands its
    /// phrase to the arpeggiator. False, and nothing changed, for other slots. UI thread.
    bool selectScene(int slot, Recall recall = Recall::values);
    /// A phrase becomes the patch's own, slot 0, and is selected. UI thread.
    void takePhrase(std::shared_ptr<const Scene> record);
    /// Where the patch lives in the library (bank * 256 + program), kept and written with it. UI
    /// thread.
    std::uint32_t idWord() const { return idWord_; }
    void setIdWord(std::uint32_t word) { idWord_ = word; }

    const ArpeggiatorSettings& arpeggiator() const { return arpeggiator_; }
    /// What the arpeggiator plays in its phrase mode; null when nothing is selected. It may change
    /// between two calls; what it pointed to before outlives the render in progress. Audio thread.
    /// Applying what is marked comes first.
    const Phrase* phrase() const { return phrase_.read(); }

    /// What a controller 0..127 drives; noParameter if nothing. Never a parameter for a controller
    /// that the engine interprets itself; the map keeps such an entry all the same. Any thread.
    ParameterId controllerTarget(int controller) const;
    ParameterId storedTarget(int controller) const;
    void assignController(int controller, ParameterId id);
    /// The next controller offered is assigned to the parameter changed last. UI thread.
    void armLearn();
    /// Whether learning was armed and took the controller; it is disarmed then. Audio thread.
    bool learn(int controller);
    ParameterId lastChanged() const { return static_cast<ParameterId>(lastChanged_.get()); }

    /// Bumped by every accepted change. Any thread.
    std::uint32_t changes() const { return changes_.get(); }
    /// Whether content or a filter mode changed since last asked; then notes in progress are not
    /// resumed. Audio thread.
    bool takeLayoutChanged() { return layoutChanged_.take() != 0; }

  private:
    friend class Element;
    friend struct GlobalScope;
    friend struct ElementScope;

    enum class When { owner, marked };

    bool exists(int element, int index) const;
    void rememberChange(int element, int index);
    void write(int element, int index, float value, When when);
    void settle(int element, int index, When when);
    void markForOwner(ParameterMarks& marks, int element, int index);
    void apply(int element, int index);
    void applyGlobal(int index);
    bool loads(int element, int index) const;
    int knobDestination(int knob) const;
    float scaledKnob(int knob) const;
    void turnKnob(int knob);
    void turnRotary(int knob);
    void rebuildMacros();
    float macro(int destination, float v) const;
    void reapplyReaders(int destination);
    void resend(int index);
    void resetControllers(int type);

    const EngineShared& shared_;
    double beatsPerFrame() const;
    /// What rows that load need done. UI thread (builder before hand-over).
    void load(int element, int index);
    void refreshTuningTable(int slot);
    /// "Current Scene" as stored. Owner.
    void enterStoredScene();
    void recallValues(const Scene& scene, int slot, When when);
    void choosePhrase(const Scene& scene, int slot);
    /// Hands over the phrase of the chosen slot. Owner.
    void followPhrase();
    void askForPhrase();  // to be followed by the owner
    void loadPhrase();

    double rate_;        // Hz
    float tempo_ = 120;  // quarter notes a minute
    PatchPlace place_;
    std::array<Published<const ItemSlot>, 2> tunings_;
    std::array<PackedItem, 2> selectedTunings_;  // UI thread
    WaitingReleases waitingReleases_;
    std::array<std::uint8_t, maxElements> effectList_{};
    int effectCount_ = 0;
    bool effectsChanged_ = true;
    std::array<Shared<float>, globalParameters> values_;
    PatchControls controls_;
    ArpeggiatorSettings arpeggiator_;
    std::unique_ptr<Element[]> elements_;  // [0] is not used
    std::unique_ptr<PatchTexts> texts_;
    std::unique_ptr<SceneTable> scenes_;
    Published<const Phrase> phrase_;      // of a scene in the table; null without events
    Shared<std::int32_t> phraseSlot_{0};  // of that scene
    SharedBits phraseStale_;              // the owner looks at the slot again
    std::uint32_t idWord_ = 0;
    ParameterMarks changed_;  // for the owner of the controls
    ParameterMarks loading_;  // for the UI thread, which passes them on as
    ParameterMarks loaded_;   // for the owner again
    SharedBits due_;          // whether the owner has marks to look for
    std::array<Shared<std::uint16_t>, 128> controllerMap_;
    Shared<std::int32_t> lastChanged_{noParameter};
    SharedBits learnArmed_;
    SharedCounter changes_;
    SharedBits layoutChanged_;
    int elementCount_ = 0;
    bool live_ = false;
};

}  // namespace stratovane
