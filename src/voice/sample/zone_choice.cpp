#include "voice/sample/zone_choice.h"

#include <algorithm>
#include <cmath>

#include "base/units.h"
#include "patch/parameter_ids.h"

namespace stratovane {
namespace {

constexpr int ownNotes = 12;             // layer base that gives every key of a kit its own drum
constexpr int kitNote = 48;              // the drum that other bases count from
constexpr int centreVelocity = 64;       // at which velocity picks no other layer
constexpr float unreceivedVelocity = 8;  // above the centre, for elements that ignore velocity
constexpr float leastPedal = 0.285f;     // below, the layers of the lifted dampers stay silent

/// The semitones by which a set's layers are shifted, or which drum a kit plays.
int layerBase(const ElementControls& controls) {
    return static_cast<int>(24.0f * controls.sample.formant + 0.5f) - 12;
}

bool needsPedal(int mode) { return mode == 3 || mode == 7; }

int clampToKeys(int note) { return std::clamp(note, 0, 127); }

int lookupNote(const ElementControls& controls, const ZoneNote& note, float random) {
    const SampleControls& sample = controls.sample;
    const float aboveCentre = controls.velocityToAll
                                  ? static_cast<float>(note.velocity - centreVelocity)
                                  : unreceivedVelocity;
    const int base = layerBase(controls);
    const int layer =
        static_cast<int>(random * sample.random + aboveCentre * sample.velocity) + base;
    if (sample.bank < elementIndex::drumKitBanks)
        return clampToKeys(layer + (base == ownNotes ? note.note - ownNotes : kitNote));
    const float key = static_cast<float>(note.note - 60) * controls.pitchKeytrack +
                      static_cast<float>(controls.wholeSemitones) + 60.5f;
    return clampToKeys(static_cast<int>(key) - layer);
}

int lookupVelocity(const SampleControls& sample, int velocity, float random) {
    const float scaled =
        random * sample.velocityRandom + static_cast<float>(velocity) * sample.velocityScale;
    return std::clamp(static_cast<int>(scaled) + sample.velocityOffset, 1, 127);
}

/// Where a zone without a key of its own stands: the middle of a narrow key zone, else as near to
/// middle C as an octave inside the zone allows.
int rootOfKeyZone(int low, int high) {
    constexpr int narrow = 24, octave = 12;
    if (high - low < narrow) return (low + high) / 2;
    const int root = low < 49 ? 60 : low + octave;
    return std::min(root, high - octave);
}

/// Semitones from the zone's root to middle C.
float semitonesFromRoot(const Zone& zone, const ElementControls& controls, int note) {
    if (!zone.rootFromKeyRange) return static_cast<float>(60 - zone.rootKey);
    const int root =
        layerBase(controls) == ownNotes ? note : rootOfKeyZone(controls.keyLow, controls.keyHigh);
    return static_cast<float>(60 - root) * controls.pitchKeytrack;
}

}  // namespace

ZoneChoice chooseZone(const SampleSet& set, const ElementControls& controls, const ZoneNote& note,
                      Random& random) {
    const float forLayer = random.unipolar(), forVelocity = random.unipolar();
    if (needsPedal(controls.sample.velocityMapMode) && note.sustain < leastPedal) return {};
    const Zone* zone = set.find(lookupNote(controls, note, forLayer),
                                lookupVelocity(controls.sample, note.velocity, forVelocity));
    const SampleData* data = zone->sampleData();
    if (data == nullptr || zone->playedFrames(*data) == 0) return {};
    return {zone, data};
}

float zonePitch(const ZoneChoice& choice, const ElementControls& controls, int note,
                double outputRate) {
    const float semitones =
        semitonesFromRoot(*choice.zone, controls, note) + choice.zone->tuneSemitones;
    return static_cast<float>(std::log(choice.data->rateHz() / outputRate)) +
           semitones * semitonePitch;
}

}  // namespace stratovane
