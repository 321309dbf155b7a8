#include "persistence/part_copier.h"

#include "automation/host_parameters.h"
#include "engine/engine.h"
#include "engine/multi_setup.h"
#include "patch/record_writer.h"
#include "persistence/patch_loader.h"
#include "persistence/program_word.h"

namespace stratovane {

bool PartCopier::copy(Engine& engine, int from, int to, Source source) {
    const auto isPart = [](int part) { return part >= 0 && part < parts; };
    if (!isPart(from) || !isPart(to) || from == to) return false;
    const Bytes record = writePatchRecord(engine.patch(from), &engine.master());
    if (!loader_.load(engine, to, ByteView{record}, {.mode = PatchLoader::Mode::copy}))
        return false;
    MultiSetup& multi = setup_.multi;
    const PartSetup& model = multi.part[static_cast<std::size_t>(from)];
    PartSetup& made = multi.part[static_cast<std::size_t>(to)];
    for (std::size_t knob = 0; knob < made.knobs.size(); ++knob)
        made.knobs[knob] = model.knobs[knob];
    made.location = model.location;
    overrideProgram(made);
    setup_.listener.partsChanged();
    copyHostValues(engine, from, to);
    if (source == Source::clear) loader_.clear(engine, from);
    multi.refresh.bump();
    return true;
}

void PartCopier::copyHostValues(Engine& engine, int from, int to) {
    HostParameters& parameters = setup_.parameters;
    for (int k = strip::mute; k < partRows; ++k) {
        if (k == strip::arpeggiatorRate) continue;  // its host range is narrower than the patch's
        HostAddress address = decodeHostIndex(from * partRows + k);
        const float value =
            address.block == HostBlock::insert
                ? engine.patch(from).get(firstSendSlot + address.slot, hostRow(address).target)
                : parameters.get(encodeHostIndex(address));
        address.part = to;
        parameters.set(encodeHostIndex(address), value);
    }
}

}  // namespace stratovane
