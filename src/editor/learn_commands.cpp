#include "editor/learn_commands.h"

#include "editor/instrument.h"
#include "engine/engine.h"

namespace stratovane {

namespace {

template <class Show>
std::string shown(Show show) {
    char text[64];
    TextOut out{text};
    show(out);
    return std::string{out.view()};
}

}  // namespace

std::optional<LearnCommands::Menu> LearnCommands::open(const LearnTarget& target) {
    Engine& engine = instrument_.startedEngine();
    const std::optional<LearnMenu> menu = learn_.open(engine, target);
    if (!menu) return std::nullopt;
    Menu texts;
    texts.title = shown([&](TextOut& out) { menu->showTitle(out); });
    texts.offersForget = menu->offersForget();
    for (int controller = 0; controller < LearnMenu::controllers; ++controller)
        texts.controllers.push_back({shown([&](TextOut& out) {
                                         MidiLearn::showController(out, engine.patch(target.part),
                                                                   controller);
                                     }),
                                     MidiLearn::isOffered(controller)});
    return texts;
}

void LearnCommands::assign(const LearnTarget& target, int controller) {
    learn_.assign(instrument_.startedEngine(), target, controller);
}

void LearnCommands::learn(const LearnTarget& target) {
    learn_.arm(instrument_.startedEngine(), target);
}

void LearnCommands::forget(const LearnTarget& target) {
    learn_.forget(instrument_.startedEngine(), target);
}

}  // namespace stratovane
