#include "interrupt.h"

#include <csignal>

namespace stratovane::render {

namespace {
// A signal handler can reach nothing but a global.
volatile std::sig_atomic_t interrupt = 0;
}  // namespace

void catchInterrupts() {
    struct sigaction action {};
    action.sa_handler = [](int signal) { interrupt = signal; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // a second one ends at once
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

int interruptSeen() { return interrupt; }

}  // namespace stratovane::render
