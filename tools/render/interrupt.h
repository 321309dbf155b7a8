// A wish to stop, from the keyboard or the system.
#pragma once

namespace stratovane::render {

/// From here on an interrupt stops the rendering in good order.
void catchInterrupts();
/// The signal that came, or 0.
int interruptSeen();

}  // namespace stratovane::render
