// The patches, samples, wavetables, tunings, drawbar sets and phrases on disk.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "content/bank_list.h"
#include "content/bytes.h"
#include "content/content_bank.h"
#include "content/content_data.h"
#include "content/content_kind.h"
#include "content/dispose_queue.h"
#include "content/idle_loader.h"
#include "content/location.h"
#include "content/waiting_releases.h"

namespace stratovane {

class Trace;

/// Up to 128 numbered banks of each kind, each with up to 128 items. Sample sets, wavetables,
/// tunings and drawbar sets are resident while an element uses them (tunings and drawbar sets from
/// then on for good) and are loaded and freed piece by piece by `idle`; patches and phrases are
/// copied out.
///
/// Threads: everything here belongs to the UI thread. The audio thread only follows the item slots
/// that were acquired, and the sample slots of the zones it finds there.
/// Invariants: a slot that was handed out stays where it is until the library is closed; nothing
/// resident is freed while it has a reference. Numbers out of range name nothing.
class ContentLibrary {
  public:
    enum class Tracing { off, on };  // trace lines, and the listing as "content.txt"

    explicit ContentLibrary(Trace& trace) : trace_{trace} {}
    ContentLibrary(const ContentLibrary&) = delete;
    ContentLibrary& operator=(const ContentLibrary&) = delete;

    /// Scans a content folder. False when no patch, sample, wavetable or drawbar bank is there;
    /// then a library that was open stays as it was.
    bool open(std::string_view folder, Tracing tracing = Tracing::off);
    bool isOpen() const { return found_; }
    /// Frees everything. Nothing may follow a slot any more.
    void close();

    // Names and paths. Views stay valid until the library is closed.
    const ContentBank* bank(ContentKind kind, int bank) const;
    std::string_view bankName(ContentKind kind, int bank) const;
    /// The first name; for item `whole` the bank's.
    std::string_view itemName(ContentKind kind, int bank, int item) const;
    /// "Bank: Item".
    std::string bankAndItemName(ContentKind kind, int bank, int item) const;
    /// The folder of a kind (bank `whole`), a bank's folder or file (item `whole`), or the file of
    /// an item, there or not; empty for items of bank files.
    std::string itemPath(ContentKind kind, int bank, int item) const;
    static constexpr int whole = -1;
    /// Names of patches and combis.
    std::string_view bankName(int bank) const { return bankName(ContentKind::patches, bank); }
    std::string_view programName(int bank, int program) const {
        return program == whole ? std::string_view{}
                                : itemName(ContentKind::patches, bank, program);
    }
    /// The content folder, with its separator.
    const std::string& root() const { return root_; }

    /// A copy of an item's bytes; nothing when it is not there or cannot be read.
    std::optional<Bytes> itemData(ContentKind kind, int bank, int item) const;

    /// Counts a reference and answers where the item will be; null when there is no such item. The
    /// ECO version is taken when it is wanted and there.
    const ItemSlot* acquire(ContentKind kind, int bank, int item, bool eco);
    /// Drops a reference. Tunings and drawbar sets keep theirs.
    void release(ContentKind kind, int bank, int item, bool eco);
    void release(ContentId id);
    /// What an element does when its selection changes: acquires the new item and lets the old one
    /// wait for its release, if it was one. `stamp` goes with it.
    const ItemSlot* request(ContentKind kind, PackedItem wanted, PackedItem old,
                            WaitingReleases& waiting, std::uint32_t stamp = 0);
    /// A resident sample of a bank, numbered from 1.
    const SampleData* sampleData(ContentKind kind, int bank, std::int32_t number);

    /// Loads or frees at most one bounded piece per bank. Answers the memory in use, or 1 while
    /// loading is under way.
    std::int32_t idle();
    /// Whether something is still to be loaded or freed.
    bool busy() const { return changes_ != done_; }
    std::int64_t memoryInUse() const { return loader_.memoryInUse; }
    /// Preload mode of combis: 2 keeps resident items; 0 and 1 let them go.
    void setPreloadMode(int mode);
    static constexpr int preloadFull = 2;

    /// Frees a thing some idle steps later, and not before the render of `stamp` is over.
    template <class T>
    void disposeLater(std::unique_ptr<T> thing, std::uint32_t stamp = 0) {
        disposing_.add(std::move(thing), stamp);
    }
    /// Tells whether the render of a stamp is over; without it every stamp counts as passed.
    using RenderPassed = std::function<bool(std::uint32_t stamp)>;
    void setRenderPassed(RenderPassed passed) { renderPassed_ = std::move(passed); }

    /// Reads a folder bank of patches, tunings or phrases again; a patch bank that is not known yet
    /// is looked for under its number and `name`. Items that are still there keep their slots.
    /// False when there is no such folder.
    bool rescan(ContentKind kind, int bank, std::string_view name);

    /// See searchPatches; answers the number of results.
    std::int32_t search(std::string_view text);
    std::span<const std::uint16_t> searchResults() const { return searchResults_; }
    /// False when the file cannot be written.
    bool writeListing(const std::string& path) const;

  private:
    using Banks = std::array<std::unique_ptr<ContentBank>, banksPerKind>;
    using AllBanks = std::array<Banks, contentKinds>;

    void scan(ContentKind kind, const std::string& folder, Banks& banks);
    void bury(std::unique_ptr<ContentBank> bank);
    ContentBank* find(ContentKind kind, int bank) const;
    BankList list(ContentKind kind) const;
    void askFor(ContentBank& bank);
    void traceItem(std::string_view verb, ContentKind kind, int bank, int item, bool eco);

    Trace& trace_;
    bool traces_ = false, found_ = false;
    std::string root_;
    AllBanks banks_;
    std::vector<std::unique_ptr<ContentBank>> former_;  // slots and names of theirs may be in use
    std::uint32_t sharedTables_ = 0;                    // bit n: slot n is registered
    std::uint32_t changes_ = 0, done_ = 0;
    LoaderState loader_;
    DisposeQueue disposing_;
    RenderPassed renderPassed_;
    std::vector<std::uint16_t> searchResults_;
};

}  // namespace stratovane
