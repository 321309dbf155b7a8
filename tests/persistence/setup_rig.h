// A whole setup without a host: an engine, a library in a folder of its own, and a user who
// answers.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "automation/host_parameters.h"
#include "content/content_library.h"
#include "engine/command_ring.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/parameter_ids.h"
#include "patch/patch.h"
#include "persistence/chunk_reader.h"
#include "persistence/chunk_writer.h"
#include "persistence/library_loader.h"
#include "persistence/patch_loader.h"
#include "persistence/setup_commands.h"
#include "settings/settings.h"
#include "support/temporary_folder.h"
#include "support/user.h"

namespace stratovane {

struct SetupRig : SetupListener {
    EngineShared shared;
    Trace trace;
    MultiSetup multi;
    Settings settings;
    CommandRing commands;
    ContentLibrary library{trace};
    HostParameters parameters{shared, multi, commands};
    Engine engine{shared, trace, 4, &library};
    ProgramName programName{"Stratovane 2"};
    bool inside = false;
    int displayUpdates = 0, listUpdates = 0;
    PatchLoader patches{multi, settings, parameters, commands, trace};
    SetupAccess access{multi,       settings, shared, parameters, library,
                       programName, inside,   *this,  trace};
    ChunkWriter writer{access};
    ChunkReader reader{access, patches};
    LibraryLoader programs{access, patches, reader};
    SetupCommands user{access, writer, reader, patches, programs};

    SetupRig() { parameters.attach(engine); }
    void partsChanged() override { ++displayUpdates; }
    void libraryChanged() override { ++listUpdates; }

    PartSetup& part(int number) { return multi.part[static_cast<std::size_t>(number)]; }
    std::uint32_t word(int number) { return part(number).pendingProgram.get(); }
    float host(int number, int row) const { return parameters.get(number * partRows + row); }

    /// A named saw of a level in a part.
    Patch& put(int number, std::string_view name, float level) {
        auto instance = engine.makeInstance(number);
        instance->patch().makeSawtooth();
        instance->patch().setText(0, name);
        instance->patch().recall(0, global::level, level);
        engine.adopt(number, std::move(instance));
        return engine.patch(number);
    }
    bool read(ByteView chunk, ChunkReader::Source source = {}) {
        return reader.read(engine, chunk, source);
    }
    /// Everything that a bank holds, as bytes.
    Bytes bank() { return writer.bank(engine); }
    /// The settings that travel with a song, in the order in which a bank holds them, as texts of
    /// what banks of one age or another end after.
    std::vector<std::string> song() const {
        const auto text = [](auto... values) {
            std::ostringstream out;
            ((out << values << ' '), ...);
            return out.str();
        };
        std::string links, latterCombis;
        for (const PartSetup& p : multi.part) links += p.linked ? '1' : '0';
        for (int slot = 4; slot < 128; ++slot) latterCombis += text(multi.combis.at(slot));
        const CombiTable& combis = multi.combis;
        return {text(parameters.get(0)),
                links,
                programName.data(),
                text(settings.velocitySensitivity, settings.touchSensitivity, settings.memoryUse),
                text(multi.tune.semitones.get(), multi.tune.fraction.get(), settings.lift,
                     multi.generalMidi.get()),
                text(combis.at(0), combis.at(1), combis.at(2), combis.at(3)),
                latterCombis,
                text(settings.combiPreload),
                text(settings.combiPreviousController.get()),
                text(settings.combiNextController.get())};
    }
};

template <class T>
void poke(Bytes& bytes, std::size_t offset, T value) {
    ASSERT_LE(offset + sizeof value, bytes.size());
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}
inline std::uint32_t peek(const Bytes& bytes, std::size_t offset) {
    return ByteView{bytes}.at<std::uint32_t>(offset);
}

}  // namespace stratovane
