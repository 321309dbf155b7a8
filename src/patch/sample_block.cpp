// "Sample" elements: which sample set, how notes and velocities choose its zones.
#include "patch/element_rows.h"
#include "patch/patch_controls.h"
#include "patch/piano_layers.h"

namespace stratovane {

namespace {

using C = ElementControls;
using S = SampleControls;
constexpr auto sample = &C::sample;

void setVelocityMapMode(ElementScope& s, float v) {
    const int mode = choice(v, 15.9f);
    if (mode == s.controls.sample.velocityMapMode) return;
    s.controls.sample.velocityMapMode = mode;
    s.reapply(elementIndex::item);  // the layers of a piano are told by the mode
}
void setSet(ElementScope& s, float v) {
    const int mode = choice(s.value(elementIndex::velocityMapMode), 15.9f);
    s.controls.sample.set = pianoLayer(mode, choice(v, 128.9f), s.patch.pianoVariant);
}
template <auto envelope>
void setLegatoAttack(ElementScope& s, float v) {
    (s.controls.*envelope).legatoAttackSeconds = v * v / 4.0f;
}

void showFormantName(TextOut& out, const ParameterView& view) {
    const bool drumKit =
        choice(view.stored(elementIndex::bank), 128.9f) < elementIndex::drumKitBanks;
    out.text(drumKit ? "Drum Sel" : "Formant");
}
void showVelocity(TextOut& out, float v, const ParameterView&) {
    out.print("%+.1f", 24.0f * v - 12.0f);
}
void showRandom(TextOut& out, float v, const ParameterView&) { out.print("\xB1%.1f", 12.0f * v); }
void showVelocityOffset(TextOut& out, float v, const ParameterView&) {
    out.print("%+.0f", 256.0f * v - 128.0f);
}
void showVelocityScale(TextOut& out, float v, const ParameterView&) {
    out.print("%+.0f %%", 400.0f * v - 100.0f);
}
void showVelocityRandom(TextOut& out, float v, const ParameterView&) {
    out.print("\xB1%.0f", 64.0f * v);
}

constexpr auto rows = std::to_array<ElementRow>({
    {.id = 17, .apply = setVelocityMapMode},
    {.id = 18,
     .name = "Bank",
     .initial = 0.08f,
     .apply = [](auto& s, float v) { s.controls.sample.bank = choice(v, 128.9f); },
     .show = showNothing,
     .layout = true,
     .loads = true},
    {.id = 19, .name = "Wave", .apply = setSet, .show = showNothing, .layout = true, .loads = true},
    {.id = 20,
     .name = "Force Mono",
     .apply = flag<sample, &S::forceMono>,
     .show = showSwitch<onOff>},
    {.id = 22,
     .initial = 0.5f,
     .apply = raw<sample, &S::formant>,
     .showName = showFormantName,
     .macro = 0,
     .voices = true},
    {.id = 23,
     .name = "Velocity",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.sample.velocity = 0.381f * v - 0.1905f; },
     .show = showVelocity},
    {.id = 24,
     .name = "Random",
     .apply = [](auto& s, float v) { s.controls.sample.random = 12.0f * v; },
     .show = showRandom},
    {.id = 28, .name = "Leg>Start", .apply = raw<sample, &S::legatoStart>},
    {.id = 29, .name = "Leg>Attack", .apply = setLegatoAttack<&C::ampEnvelope>},
    {.id = 30, .name = "Leg>F.Attack", .apply = setLegatoAttack<&C::filterEnvelope>},
    {.id = 33,
     .name = "Vel Offs",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.sample.velocityOffset = centred(v, 128); },
     .show = showVelocityOffset},
    {.id = 34,
     .name = "Vel Scale",
     .initial = 0.5f,
     .apply = [](auto& s, float v) { s.controls.sample.velocityScale = 4.0f * v - 1.0f; },
     .show = showVelocityScale},
    {.id = 35,
     .name = "Vel Rnd",
     .apply = [](auto& s, float v) { s.controls.sample.velocityRandom = 64.0f * v; },
     .show = showVelocityRandom},
});
static_assert(inOrder(rows));

}  // namespace

std::span<const ElementRow> sampleBlock() { return rows; }

}  // namespace stratovane
