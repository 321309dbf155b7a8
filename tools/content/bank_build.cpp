#include <algorithm>
#include <filesystem>

#include "bank_items.h"
#include "content/bank_file_writer.h"
#include "content/file_bytes.h"
#include "failure.h"
#include "output_file.h"

namespace stratovane::content_tool {

namespace {

ContentKind bankKind(const JsonNode& node) {
    const std::string name = node.text(longestName);
    for (const BankKindName& row : bankKindNames)
        if (name == row.name) return row.kind;
    node.refuse("\"samples\", \"wavetables\" or \"drawbars\" was expected");
}

Bytes sharedTable(const JsonNode& node, const std::string& folder) {
    constexpr int slots = 16;
    const std::string path = besideSpec(folder, node);
    auto bytes = readFile(path);
    if (!bytes) throw Failure{Exit::input, path + " cannot be read"};
    if (bytes->empty() || bytes->front() >= slots)
        node.refuse("a shared table begins with its slot, 0 to 15");
    return std::move(*bytes);
}

}  // namespace

void buildBank(const std::string& specPath, const std::string& bankPath) {
    const Json json = readJson(specPath);
    const JsonNode root{json, specPath};
    root.allow({"kind", "second", "code", "format", "shared", "items"});
    const std::string folder = std::filesystem::path{specPath}.parent_path().string();
    const ContentKind kind = bankKind(root.at("kind"));
    const auto formatNode = root.find("format");
    const SampleFormat format = formatNode ? sampleFormat(*formatNode) : SampleFormat::pcm16;

    BankFileSource bank;
    bank.secondName = root.text("second", longestName);
    bank.code = static_cast<std::int8_t>(root.integer("code", -128, 127, defaultCode));
    if (const auto shared = root.find("shared")) bank.sharedTable = sharedTable(*shared, folder);
    SamplePool pool{folder};
    for (const JsonNode& node : root.at("items").elements()) {
        const int number =
            node.integer("number", 0, itemsPerBank - 1, static_cast<int>(bank.items.size()));
        bank.items.resize(std::max(bank.items.size(), static_cast<std::size_t>(number) + 1));
        BankFileSource::Item& item = bank.items[static_cast<std::size_t>(number)];
        if (!item.normal.empty())
            node.refuse("there is an item " + std::to_string(number) + " already");
        item.name = node.text("name", longestName);
        item.secondName = node.text("second", longestName);
        if (kind == ContentKind::samples)
            buildSampleSet(node, format, pool, item);
        else if (kind == ContentKind::wavetables)
            item.normal = buildWavetable(node, folder);
        else
            item.normal = buildToneWheels(node, folder);
    }
    bank.samples = pool.take();
    const Bytes file = writeBankFile(bank);
    if (file.empty()) throw Failure{Exit::input, specPath + ": the bank would pass 2 GiB"};
    writeWhole(bankPath, file);
}

}  // namespace stratovane::content_tool
