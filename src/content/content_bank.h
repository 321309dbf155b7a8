// One bank of a kind: its items, and the samples that items of a sample bank share.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/shared.h"
#include "base/trace.h"
#include "content/bank_file.h"
#include "content/content_data.h"
#include "content/entry_names.h"
#include "content/sample_set.h"

namespace stratovane {

/// An item or one of its two versions stays where it is from the scan to the close of the library,
/// also when its bank is read again. UI thread, except that any thread follows the slots.
struct ContentItem {
    struct Version {
        explicit Version(ContentKind kind) : slot{kind} {}
        FileRange range;  // of a bank file; of a folder's item only the size counts
        Shared<std::int32_t> references;
        std::unique_ptr<ContentData> data;  // published in the slot
        ItemSlot slot;

        bool exists() const { return range.size != 0; }
    };

    explicit ContentItem(ContentKind kind) : normal{kind}, eco{kind} {}
    Version& version(bool ecoWanted) { return ecoWanted && eco.exists() ? eco : normal; }

    std::string name, secondName;
    std::string fileName;  // of a folder's item
    ItemFile type = ItemFile::patch;
    Version normal, eco;
};

struct ContentSample {
    FileRange range;
    Shared<std::int32_t> references;
    bool failed = false;  // not tried again until nothing refers to it
    std::unique_ptr<SampleData> data;
    SampleSlot slot;
};

/// UI thread.
class ContentBank {
  public:
    ContentBank(ContentKind kind, int number, std::string name)
        : kind_{kind}, number_{number}, name_{std::move(name)} {}
    ContentBank(const ContentBank&) = delete;
    ContentBank& operator=(const ContentBank&) = delete;

    /// A folder (its path ends in a separator) or a bank file; what is damaged is left out and
    /// told.
    static std::unique_ptr<ContentBank> fromFolder(ContentKind kind, int number, std::string name,
                                                   std::string path);
    static std::unique_ptr<ContentBank> fromFile(ContentKind kind, int number, std::string name,
                                                 std::string path, Trace& trace);
    /// Takes over the items, loaded or not, that the folder's former reading had under the same
    /// number and name, and what was asked of it.
    void inherit(ContentBank& former);

    ContentKind kind() const { return kind_; }
    int number() const { return number_; }
    const std::string& name() const { return name_; }
    const std::string& secondName() const { return secondName_; }
    const std::string& path() const { return path_; }
    bool isFolder() const { return isFolder_; }
    int code() const { return code_; }
    /// Of a folder 128, of a bank file what its table holds.
    int itemCount() const { return itemCount_; }
    /// Samples there are, numbered from 1.
    int sampleCount() const { return samples_.empty() ? 0 : static_cast<int>(samples_.size()) - 1; }
    bool hasSharedTable() const { return sharedSlot_ >= 0; }
    int sharedSlot() const { return sharedSlot_; }

    /// Null when there is none; numbers are 0..127.
    ContentItem* item(int number) { return isLocationNumber(number) ? at(number) : nullptr; }
    const ContentItem* item(int number) const {
        return isLocationNumber(number) ? at(number) : nullptr;
    }
    /// Null outside 1..`sampleCount`.
    ContentSample* sample(std::int64_t number) {
        return number >= 1 && number <= sampleCount() ? &samples_[static_cast<std::size_t>(number)]
                                                      : nullptr;
    }

    /// A new copy of an item's bytes: what follows a file's wrapper, a tuning as its item.
    std::optional<Bytes> itemBytes(int number) const;
    /// Reads and checks a version of an item. A fault says what is wrong with it.
    std::unique_ptr<ContentData> load(const ContentItem& item, const ContentItem::Version& version,
                                      ContentFault& fault) const;
    std::unique_ptr<SampleData> load(const ContentSample& sample, ContentFault& fault) const;

    // What is asked of the loader, and what it has done.
    std::uint32_t requests = 0, done = 0;
    std::uint32_t stamp = 0;  // the pass in which the bank may be worked on

  private:
    ContentItem* at(int number) const { return items_[static_cast<std::size_t>(number)].get(); }

    ContentKind kind_;
    int number_;
    std::string name_, secondName_, path_;
    bool isFolder_ = false;
    int code_ = 0, itemCount_ = 0, sharedSlot_ = -1;
    std::array<std::unique_ptr<ContentItem>, itemsPerBank> items_;
    std::vector<ContentSample> samples_;  // entry 0 unused; never resized
};

}  // namespace stratovane
