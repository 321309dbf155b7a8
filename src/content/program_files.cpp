#include "content/program_files.h"

namespace stratovane {

namespace {

constexpr std::string_view fileTag = "CcnK", presetTag = "FPCh", plugInCode = "QvRR";
constexpr std::string_view elementTag = "MilE";
constexpr std::uint32_t formatVersion = 1, plugInVersion = 1;
constexpr std::uint32_t hostParameterCount = 2528;
constexpr std::uint32_t elementVersion = 1007;
constexpr std::size_t sizeOffset = 4, kindOffset = 8, bankLetter = 9;
constexpr std::size_t nameField = 28, elementNameField = 160, longestBaseName = 31;

std::uint32_t bigEndian(std::uint32_t v) {
    return v << 24 | (v & 0xFF00) << 8 | (v >> 8 & 0xFF00) | v >> 24;
}
std::uint32_t bigEndianAt(ByteView bytes, std::size_t offset) {
    return bigEndian(bytes.at<std::uint32_t>(offset));
}
void putTag(ByteWriter& out, std::string_view tag) {
    out.append({reinterpret_cast<const std::uint8_t*>(tag.data()), tag.size()});
}

void putStart(ByteWriter& out, std::string_view kind, std::string_view code, std::uint32_t count) {
    putTag(out, fileTag);
    out.put<std::uint32_t>(0);  // the file's size, which nobody reads
    putTag(out, kind);
    out.put(bigEndian(formatVersion));
    putTag(out, code);
    out.put(bigEndian(plugInVersion));
    out.put(bigEndian(count));
}
void putChunkSize(ByteWriter& out, std::size_t bytes) {
    out.put(bigEndian(static_cast<std::uint32_t>(bytes & 0xFFFFFF)));
}

/// Blank and controls; the upper half of the characters are letters.
bool isTrimmed(char c) { return static_cast<unsigned char>(c) <= ' '; }

}  // namespace

std::optional<ProgramFile> openProgramFile(ByteView file) {
    if (!file.has(0, presetHeaderBytes)) return std::nullopt;
    Bytes expected = presetFileHeader({}, 0);
    ProgramFile found;
    found.bank = file.at<std::uint8_t>(bankLetter) == 'B';
    if (found.bank) expected[bankLetter] = 'B';
    const ByteView wanted{expected};
    const auto same = [&](std::size_t from, std::size_t to) {
        return file.part(from, to - from).text() == wanted.part(from, to - from).text();
    };
    constexpr std::size_t plugInVersionOffset = 20;  // any version, any file size
    if (!same(0, sizeOffset) || !same(kindOffset, plugInVersionOffset)) return std::nullopt;
    const std::size_t header = found.bank ? bankHeaderBytes : presetHeaderBytes;
    if (!file.has(0, header)) return std::nullopt;
    found.announcedBytes = bigEndianAt(file, header - 4);
    found.chunk = file.part(header, found.announcedBytes);
    return found;
}

Bytes presetFileHeader(std::string_view programName, std::size_t chunkBytes) {
    ByteWriter out;
    putStart(out, presetTag, plugInCode, hostParameterCount);
    out.text(programName, nameField);
    putChunkSize(out, chunkBytes);
    return out.take();
}

Bytes bankFileHeader(std::size_t chunkBytes) {
    ByteWriter out;
    putStart(out, "FBCh", plugInCode, 1);
    out.fillTo(bankHeaderBytes - 4);
    putChunkSize(out, chunkBytes);
    return out.take();
}

Bytes makeElementFile(std::string_view path, const ElementValues& values) {
    const std::string_view name = fileBaseName(path);
    ByteWriter out;
    putStart(out, presetTag, elementTag, static_cast<std::uint32_t>(values.size()));
    out.text(name, nameField);
    putChunkSize(out, elementFileBytes - presetHeaderBytes);
    putTag(out, elementTag);
    out.put(elementVersion);
    out.text(name, elementNameField);
    for (const float value : values) out.put(value);
    return out.take();
}

std::optional<ElementValues> readElementFile(ByteView file) {
    if (file.size() != elementFileBytes) return std::nullopt;
    ElementValues values{};
    const std::size_t first = elementFileBytes - sizeof values;
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = file.at<float>(first + sizeof(float) * i);
    return values;
}

std::string_view fileBaseName(std::string_view path) {
    constexpr std::size_t extension = 4;
    std::string_view name = path.substr(path.find_last_of("/\\") + 1);
    const std::size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && name.size() - dot == extension) name = name.substr(0, dot);
    while (!name.empty() && isTrimmed(name.front())) name.remove_prefix(1);
    while (!name.empty() && isTrimmed(name.back())) name.remove_suffix(1);
    return name.substr(0, longestBaseName);
}

}  // namespace stratovane
