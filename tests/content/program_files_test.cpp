#include "content/program_files.h"

#include <gtest/gtest.h>

#include <cstring>

namespace stratovane {
namespace {

std::string hex(ByteView bytes) {
    std::string text;
    for (std::uint64_t i = 0; i < bytes.size(); ++i) {
        constexpr const char* digits = "0123456789ABCDEF";
        const auto byte = bytes.at<std::uint8_t>(i);
        text += {digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}

TEST(ProgramFiles, HeadersStandAsTheHostKnowsThem) {
    const Bytes preset = presetFileHeader("A name that is longer than the field", 0x012345);
    EXPECT_EQ(hex(ByteView{preset}.part(0, 28)),
              "43636E4B0000000046504368000000015176525200000001000009E0");
    EXPECT_EQ(ByteView{preset}.part(28, 28).terminatedText(), "A name that is longer than ");
    EXPECT_EQ(hex(ByteView{preset}.from(56)), "00012345");

    const Bytes bank = bankFileHeader(1999999);
    EXPECT_EQ(hex(ByteView{bank}.part(0, 28)),
              "43636E4B000000004642436800000001517652520000000100000001");
    EXPECT_EQ(hex(ByteView{bank}.from(28)), std::string(256, '0') + "001E847F");
}

TEST(ProgramFiles, OpenWhatIsOursOnly) {
    Bytes preset = presetFileHeader("P", 5);
    for (const int c : {'c', 'h', 'u', 'n', 'k', '+'})
        preset.push_back(static_cast<std::uint8_t>(c));
    Bytes bank = bankFileHeader(1 << 20);
    bank.push_back('x');

    ASSERT_TRUE(openProgramFile(preset));
    EXPECT_FALSE(openProgramFile(preset)->bank);
    EXPECT_EQ(openProgramFile(preset)->chunk.text(), "chunk");
    ASSERT_TRUE(openProgramFile(bank));
    EXPECT_TRUE(openProgramFile(bank)->bank);
    EXPECT_EQ(openProgramFile(bank)->announcedBytes, 1u << 20);
    EXPECT_EQ(openProgramFile(bank)->chunk.text(), "x");

    for (std::size_t i = 0; i < 60; ++i) {
        Bytes changed = preset;
        changed[i] ^= 0x10;
        const bool compared = i < 4 || (i >= 8 && i < 20);
        EXPECT_EQ(openProgramFile(changed).has_value(), !compared) << "byte " << i;
    }
    EXPECT_FALSE(openProgramFile(ByteView{preset}.part(0, 59)));
    EXPECT_FALSE(openProgramFile(ByteView{bank}.part(0, 159)));
}

TEST(ProgramFiles, HoldOneElement) {
    ElementValues values{};
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<float>(i) / 255.0f;
    const Bytes file = makeElementFile("effects/A rather long name of an effect, cut.fxp", values);
    ASSERT_EQ(file.size(), 1252u);
    EXPECT_EQ(hex(ByteView{file}.part(0, 28)),
              "43636E4B0000000046504368000000014D696C450000000100000100");
    EXPECT_EQ(ByteView{file}.part(28, 28).terminatedText(), "A rather long name of an ef");
    EXPECT_EQ(hex(ByteView{file}.part(56, 12)), "000004A84D696C45EF030000");
    EXPECT_EQ(ByteView{file}.part(68, 160).terminatedText(), "A rather long name of an effect");
    EXPECT_EQ(readElementFile(file), values);

    Bytes other = file;
    std::memset(other.data(), 0xFF, 60);  // any header will do
    EXPECT_EQ(readElementFile(other), values);
    other.push_back(0);
    EXPECT_FALSE(readElementFile(other));
}

TEST(ProgramFiles, AreNamedAfterTheirPaths) {
    const struct {
        const char *path, *name;
    } cases[] = {
        {"/a/b.c/Plate.fxp", "Plate"},
        {"C:\\effects\\Plate.fxp", "Plate"},
        {"Plate", "Plate"},
        {"a/ \tPlate 2 .fxp", "Plate 2"},
        {"Plate.v2.fxp", "Plate.v2"},
        {"Plate.v2", "Plate.v2"},  // no extension of four characters
        {"Plate.json", "Plate.json"},
        {".fxp", ""},
        {"a/", ""},
        {"\xC4\xD6.fxp", "\xC4\xD6"},  // letters, not controls
        {"0123456789012345678901234567890123.fxp", "0123456789012345678901234567890"},
    };
    for (const auto& c : cases) EXPECT_EQ(fileBaseName(c.path), c.name) << c.path;
}

}  // namespace
}  // namespace stratovane
