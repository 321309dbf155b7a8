#include "patch/piano_layers.h"

#include <array>
#include <cstddef>

#include "base/units.h"

namespace stratovane {

int pianoVariant(float mode, float model, float resonance) {
    return 6 * choice(mode, 2.9f) + choice(resonance, 2.9f) + (isOn(model) ? 3 : 0);
}

namespace {

enum Set { a, b, c, d, own };

// Sets a..d by quality.
constexpr int sets[3][4] = {{8, 12, 10, 14}, {7, 11, 9, 13}, {0, 2, 1, 3}};

struct Layer {
    Set set;
    int firstSubVariant, lastSubVariant;  // it plays in these
};
constexpr std::array<Layer, 8> layers{{
    {a, 0, 2},
    {b, 1, 1},
    {own, 0, 2},
    {b, 2, 2},
    {c, 3, 5},
    {d, 4, 4},
    {own, 3, 5},
    {d, 5, 5},
}};

}  // namespace

int pianoLayer(int mode, int number, int variant) {
    if (mode < 1 || mode > 8 || number >= noSampleSet || variant < 0 || variant > 17) return number;
    const Layer& layer = layers[static_cast<std::size_t>(mode - 1)];
    const int subVariant = variant % 6;
    if (subVariant < layer.firstSubVariant || subVariant > layer.lastSubVariant) return noSampleSet;
    return layer.set == own ? number : sets[variant / 6][layer.set];
}

}  // namespace stratovane
