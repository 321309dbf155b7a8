#include "song_setup.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "content/program_files.h"
#include "offered_programs.h"
#include "parameters.h"

namespace stratovane::render {

namespace {

namespace fs = std::filesystem;

constexpr int melodicBank = 78;  // the General MIDI sounds of a content library
constexpr std::uint8_t bankMsb = 0, bankLsb = 32;
// Far above what a plug-in takes, far below what a machine holds.
constexpr std::uintmax_t largestFile = std::uintmax_t{16} << 20;

std::variant<Bytes, Failure> readProgramFile(const std::string& path, bool wantsBank) {
    const auto refuse = [&](const char* why) { return Failure{Exit::input, path + why}; };
    std::error_code error;
    if (!fs::exists(path, error)) return refuse(": there is no such file");
    if (!fs::is_regular_file(path, error)) return refuse(": this is no file");
    const std::uintmax_t size = fs::file_size(path, error);
    if (error || size > largestFile) return refuse(" is not a Stratovane file!");
    Bytes bytes(static_cast<std::size_t>(size));
    std::ifstream stream{path, std::ios::binary};
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!stream) return refuse(": the file cannot be read");

    const auto file = openProgramFile(bytes);
    if (!file) return refuse(" is not a Stratovane file!");
    if (file->bank != wantsBank)
        return refuse(wantsBank ? " is a preset; load it with --preset"
                                : " is a bank; load it with --bank");
    if (file->chunk.size() < file->announcedBytes)
        return refuse(": the file ends before its chunk does");
    return Bytes{file->chunk.data(), file->chunk.data() + file->chunk.size()};
}

/// General MIDI mode as a bank chunk stores it.
bool bankHasGeneralMidi(ByteView bank) {
    constexpr std::uint64_t globalBlockOffset = 84, mode = 80;
    return bank.at<std::int32_t>(bank.at<std::uint32_t>(globalBlockOffset) + mode) != 0;
}

SongEvent message(int status, int channel, int data1, int data2 = 0) {
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    return {0, {byte(status | channel), byte(data1), byte(data2)}, {}};
}

void deliver(PluginHost& plugIn, ProgramWatch& watch, std::vector<SongEvent> events) {
    watch.send(events, 1);
    plugIn.deliver(events);
    watch.loaded();
}

std::optional<Failure> loadChunk(PluginHost& plugIn, const Bytes& chunk, const std::string& path,
                                 bool preset) {
    if (const auto why = plugIn.setChunk(chunk, preset))
        return Failure{Exit::plugIn, path + ": the plug-in refuses it: " + *why};
    return {};
}

std::string numbersOf(const PatchChoice& patch) {
    return std::to_string(patch.bank) + "." + std::to_string(patch.program);
}

std::optional<Failure> checkPatch(PluginHost& plugIn, const PatchChoice& patch) {
    const auto refuse = [&](const std::string& why) {
        return Failure{Exit::plugIn, "--patch " + std::to_string(patch.part + 1) + "=" +
                                         numbersOf(patch) + ": " + why};
    };
    const Origin origin = originOf(plugIn, patch.part);
    if (!origin.told)
        return refuse("the plug-in tells no programs; it does with --set \"MIDI Patches=ON\"");
    if (!offeredName(plugIn, patch.bank, patch.program))
        return refuse("there is no such program (--list-programs lists them)");
    if (patch.isCombi()) {
        if (isSetup(plugIn, patch.bank, patch.program)) return {};
        return refuse(
            "the combi was not loaded; part 16 takes combis, with --set \"MIDI "
            "Combis=Chain\" every part does");
    }
    if (origin.is(patch.bank, patch.program)) return {};
    if (!origin.program)
        return refuse("part " + std::to_string(patch.part + 1) + " did not take it");
    return refuse("part " + std::to_string(patch.part + 1) + " got " +
                  numbersOf({patch.part, origin.program->bankLsb, origin.program->program}) +
                  " instead; in General MIDI mode programs come from banks 78 and 79 alone");
}

std::optional<Failure> loadPatches(PluginHost& plugIn, const Options& options,
                                   ProgramWatch& watch) {
    auto patches = options.patches;
    std::stable_partition(patches.begin(), patches.end(),
                          [](const PatchChoice& patch) { return patch.isCombi(); });
    const auto selectBank = [](const PatchChoice& patch, int bank) {
        return std::vector{message(0xB0, patch.part, bankMsb, 0),
                           message(0xB0, patch.part, bankLsb, bank)};
    };
    for (const PatchChoice& patch : patches) {
        auto events = selectBank(patch, patch.bank);
        events.push_back(message(0xC0, patch.part, patch.program));
        deliver(plugIn, watch, events);
        if (auto failure = checkPatch(plugIn, patch)) return failure;
    }
    // The song's own program changes find the bank selection as if nothing had been.
    if (options.keepPrograms)
        for (const PatchChoice& patch : patches) deliver(plugIn, watch, selectBank(patch, 0));
    return {};
}

std::optional<Failure> addEffects(PluginHost& plugIn, const Options& options) {
    for (const EffectChoice& effect : options.effects)
        if (!plugIn.addEffect(options.mainPart(), effect))
            return Failure{Exit::plugIn, "the plug-in has no place for the effect " +
                                             quotedName(effect) + " in part " +
                                             std::to_string(options.mainPart() + 1)};
    return {};
}

}  // namespace

std::variant<SetupFiles, Failure> readSetupFiles(const Options& options) {
    SetupFiles files;
    for (const auto& [path, chunk, bank] : {std::tuple{&options.bank, &files.bank, true},
                                            std::tuple{&options.preset, &files.preset, false}}) {
        if (path->empty()) continue;
        auto read = readProgramFile(*path, bank);
        if (const auto* failure = std::get_if<Failure>(&read)) return *failure;
        *chunk = std::get<Bytes>(std::move(read));
    }
    return files;
}

bool wantsGeneralMidi(PluginHost& plugIn, const Options& options, bool songResets) {
    if (options.generalMidi != GeneralMidi::automatic)
        return options.generalMidi == GeneralMidi::on;
    return !songResets && !options.choosesPrograms() && offersBank(plugIn, melodicBank);
}

std::optional<Failure> setUp(PluginHost& plugIn, const Options& options, const SetupFiles& files,
                             bool generalMidi, ProgramWatch& watch) {
    if (generalMidi) {
        SongEvent on;
        on.exclusive = {0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7};
        deliver(plugIn, watch, {on});
    }
    if (!options.bank.empty()) {
        if (auto failure = loadChunk(plugIn, files.bank, options.bank, false)) return failure;
        watch.setGeneralMidi(bankHasGeneralMidi(files.bank));
    }
    if (auto failure = loadPatches(plugIn, options, watch)) return failure;
    if (!options.preset.empty()) {
        plugIn.selectPart(options.mainPart());
        if (auto failure = loadChunk(plugIn, files.preset, options.preset, true)) return failure;
    }
    if (auto failure = addEffects(plugIn, options)) return failure;
    return setParameters(plugIn, options.parameters);
}

}  // namespace stratovane::render
