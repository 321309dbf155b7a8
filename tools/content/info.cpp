#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>

#include "bank_kind.h"
#include "bank_spec.h"
#include "commands.h"
#include "content/file_bytes.h"
#include "content/sample_set.h"
#include "content/scene_record.h"
#include "content/tuning_table.h"
#include "patch_info.h"
#include "shared/windows_1252.h"
#include "sound.h"

namespace stratovane::content_tool {

namespace {

void line(const char* what, const std::string& text) { std::cout << what << ": " << text << '\n'; }

std::string shown(double value, int digits = 3) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

void showSampleItem(const std::string& path, FileRange range) {
    const auto bytes = readFilePart(path, range.offset, range.size);
    ContentFault fault{0, "it leaves the file"};
    const auto set = bytes ? readSampleSet(*bytes, fault) : nullptr;
    std::cout << "  "
              << (set ? std::to_string(set->zones.size()) + " zones" : std::string{fault.sentence});
}

void showBank(const std::string& path) {
    std::optional<ContentFault> fault;
    const BankFile bank = readBankFile(path, fault);
    if (fault)
        throw Failure{Exit::input,
                      path + ", byte " + std::to_string(fault->offset) + ": " + fault->sentence};
    const auto kind = kindOfBank(path, bank);
    std::string kindName = "unknown items";
    if (kind) kindName = factsOf(*kind).folder.substr(0, factsOf(*kind).folder.size() - 1);
    line("Bank", kindName);
    line("Second name", utf8FromWindows1252(bank.secondName));
    line("Code", std::to_string(bank.code));
    if (bank.sharedSlot >= 0)
        line("Shared table", "slot " + std::to_string(bank.sharedSlot) + ", " +
                                 std::to_string(bank.sharedTable.size()) + " bytes");
    line("Items", std::to_string(bank.items.size()));
    for (std::size_t i = 0; i < bank.items.size(); ++i) {
        const auto& item = bank.items[i];
        if (item.normal.size == 0) continue;
        char number[32];
        std::snprintf(number, sizeof number, "  %03d ", static_cast<int>(i));
        std::cout << number << utf8FromWindows1252(item.name) << "  " << item.normal.size
                  << " bytes";
        if (item.eco.size != 0) std::cout << ", small " << item.eco.size << " bytes";
        if (kind == ContentKind::samples) showSampleItem(path, item.normal);
        std::cout << '\n';
    }
    line("Samples", std::to_string(bank.samples.empty() ? 0 : bank.samples.size() - 1));
    for (std::size_t i = 1; i < bank.samples.size(); ++i) {
        const FileRange range = bank.samples[i];
        if (range.size == 0) continue;
        auto bytes = readFilePart(path, range.offset, range.size);
        ContentFault why{0, "it leaves the file"};
        const auto data = bytes ? readSampleData(std::move(*bytes), why) : nullptr;
        std::cout << "  " << i << ' ';
        if (data)
            std::cout << formatName(data->format()) << ", " << data->frames() << " frames, "
                      << data->rateHz() << " Hz, " << (data->channels() == 1 ? "mono" : "stereo");
        else
            std::cout << why.sentence;
        std::cout << '\n';
    }
}

void showTuning(ByteView file) {
    const auto table = readTuningText(file.text());
    line("Tuning", "semitones from equal temperament, by note");
    for (std::size_t note = 0; note < table->semitones.size(); ++note)
        std::cout << "  " << note << ' ' << shown(static_cast<double>(table->semitones[note]), 4)
                  << (note % 12 == 11 ? "\n" : "");
    std::cout << '\n';
}

void showPhrase(const std::string& path, ByteView file) {
    const auto scene = readSceneRecord(file);
    if (!scene) throw Failure{Exit::input, path + ", byte 0: the phrase's size does not fit"};
    line("Phrase", utf8FromWindows1252(scene->name));
    line("Length", shown(static_cast<double>(scene->phrase.lengthBeats)) + " beats");
    std::map<int, int> kinds;
    for (const PhraseEvent& event : scene->phrase.events) ++kinds[event.status & 0xF0];
    line("Notes", std::to_string(kinds[0x90]));
    line("Controllers", std::to_string(kinds[0xB0]));
    line("Pressure", std::to_string(kinds[0xD0]));
    line("Bends", std::to_string(kinds[0xE0]));
}

void showSound(const std::string& path) {
    const Sound sound = readSound(path);
    line("Sound", sound.format);
    line("Rate", std::to_string(sound.rateHz) + " Hz");
    line("Channels", std::to_string(sound.channels));
    line("Frames", std::to_string(sound.frames()));
    if (sound.rootKey) line("Root key", std::to_string(*sound.rootKey));
    if (sound.tuneSemitones != 0)
        line("Tune", shown(static_cast<double>(sound.tuneSemitones), 4) + " semitones");
    if (sound.loop)
        line("Loop", "from frame " + std::to_string(sound.loop->first) + ", " +
                         std::to_string(sound.loop->frames) + " frames" +
                         (sound.loop->forward ? "" : ", not forward"));
}

}  // namespace

void showInfo(const std::string& path) {
    const auto bytes = readFile(path);
    if (!bytes) throw Failure{Exit::input, path + " cannot be read"};
    const ByteView file{*bytes};
    std::string extension = std::filesystem::path{path}.extension().string();
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    if (extension == ".tun")
        showTuning(file);
    else if (extension == ".phr")
        showPhrase(path, file);
    else if (extension == ".fxp" || extension == ".fxb")
        showPatchInfo(path, file);
    else if (extension == ".wav" || extension == ".flac")
        showSound(path);
    else
        showBank(path);
}

}  // namespace stratovane::content_tool
