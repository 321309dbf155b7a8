// What a modulation row may read and move, as addresses in a voice and its part.
#pragma once

#include <cstdint>

namespace stratovane {

struct PartState;
struct Voice;

/// Source 0..71 or the filter's input; constant 0 for those that name nothing and for a wheel or
/// pressure that the element does not receive. Audio thread.
const float* sourceAddress(const PartState& part, const Voice& voice, std::int32_t source);

/// Those that go nowhere lead to a field that nothing reads. Audio thread.
float* destinationAddress(Voice& voice, std::int32_t destination);

}  // namespace stratovane
