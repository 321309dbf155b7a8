#include <iostream>
#include <set>

#include "bank_check.h"
#include "commands.h"
#include "content/content_kind.h"
#include "content/file_bytes.h"
#include "item_check.h"
#include "platform/folder.h"

namespace stratovane::content_tool {

void Faults::add(const std::string& path, std::uint64_t offset, std::string_view sentence) {
    std::cout << path << ", byte " << offset << ": " << sentence << '\n';
    ++count_;
}

namespace {

constexpr bool isFolderKind(ContentKind kind) {
    return kind == ContentKind::patches || kind == ContentKind::tunings ||
           kind == ContentKind::phrases;
}

/// Numbers of a folder: who comes first has one.
class Numbers {
  public:
    bool take(int number) { return taken_.insert(number).second; }

  private:
    std::set<int> taken_;
};

class ContentCheck {
  public:
    void checkKind(const std::string& root, ContentKind kind) {
        const std::string folder = root + std::string{factsOf(kind).folder};
        std::vector<FolderEntry> entries;
        listFolder(folder, entries);
        Numbers numbers;
        for (const FolderEntry& entry : entries) {
            const std::string path = folder + entry.name;
            const auto bank = parseBankEntry(entry.name, entry.isFolder);
            if (!bank)
                faults_.add(path, 0, "the name is not that of a bank");
            else if (!numbers.take(bank->number))
                faults_.add(path, 0, "an earlier bank has this number");
            else
                checkBank(path, entry.isFolder, kind);
        }
    }
    int banks() const { return banks_; }
    int faults() const { return faults_.count(); }

  private:
    void checkBank(const std::string& path, bool isFolder, ContentKind kind) {
        ++banks_;
        if (!isFolder) return checkBankFile(path, kind, faults_);
        if (!isFolderKind(kind))
            return faults_.add(path, 0, "banks of this kind are files, not folders");
        std::vector<FolderEntry> entries;
        if (!listFolder(path, entries)) return faults_.add(path, 0, "the folder cannot be read");
        Numbers numbers;
        for (const FolderEntry& entry : entries) {
            const std::string file = path + "/" + entry.name;
            const auto item = parseItemEntry(entry.name, kind);
            if (entry.isFolder || !item)
                faults_.add(file, 0, "the name is not that of an item of this kind");
            else if (!numbers.take(item->number))
                faults_.add(file, 0, "an earlier item has this number");
            else
                checkFile(file, item->type);
        }
    }

    void checkFile(const std::string& path, ItemFile type) {
        const auto bytes = readFile(path);
        if (!bytes) return faults_.add(path, 0, "the file cannot be read");
        if (const auto fault = judgeFile(type, *bytes))
            faults_.add(path, fault->offset, fault->sentence);
    }

    Faults faults_;
    int banks_ = 0;
};

}  // namespace

Exit checkContent(const std::string& folder) {
    std::vector<FolderEntry> entries;
    if (!listFolder(folder, entries)) throw Failure{Exit::input, folder + " cannot be read"};
    ContentCheck check;
    for (int kind = 1; kind <= contentKinds; ++kind)
        check.checkKind(folder + "/", static_cast<ContentKind>(kind));
    if (check.banks() == 0) throw Failure{Exit::input, "there is no content in " + folder};
    std::cerr << check.banks() << " banks, " << check.faults() << " faults\n";
    return check.faults() == 0 ? Exit::ok : Exit::faults;
}

}  // namespace stratovane::content_tool
