// The library's one exported function.

#include <new>

#include "host/synth_plugin.h"

#if defined(_WIN32)
#define STRATOVANE_EXPORT __declspec(dllexport)
#define STRATOVANE_ENTRY "main"
#else
#define STRATOVANE_EXPORT __attribute__((visibility("default")))
#define STRATOVANE_ENTRY "main"
#endif

namespace stratovane {

/// Null when the callback does not answer or the memory is not there: the host then takes the
/// library for one that cannot be loaded. A C++ function of this name may not be called "main"; the
/// label makes it so.
extern "C" STRATOVANE_EXPORT EffectRecord* stratovaneMain(HostCallback host) __asm__(
    STRATOVANE_ENTRY);

EffectRecord* stratovaneMain(HostCallback host) {
    if (host == nullptr ||
        host(nullptr, static_cast<std::int32_t>(HostRequest::version), 0, 0, nullptr, 0.0f) == 0)
        return nullptr;
    try {
        return (new SynthPlugin{host})->record();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace stratovane
