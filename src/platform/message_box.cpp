#include "platform/message_box.h"

#include <type_traits>

#include "base/published.h"
#include "platform/platform.h"

namespace stratovane {

namespace {
// The one value that all instances share: whoever runs the process answers for its user.
constinit Published<std::remove_pointer_t<MessageBoxHook>> hookInForce;
}  // namespace

void setMessageBoxHook(MessageBoxHook hook) { hookInForce.publish(hook); }

int messageBox(const char* text, bool question) {
    if (MessageBoxHook hook = hookInForce.read()) return hook(text, question ? 1 : 0) != 0 ? 1 : 0;
    return systemMessageBox(text, question);
}

}  // namespace stratovane
