// Sample rates down, for the small versions of samples.
#pragma once

#include "sound.h"

namespace stratovane::content_tool {

/// The sound at about `rateHz`, band-limited; a rate that is not below the sound's changes nothing.
/// A loop stays a loop of whole frames at the same pitch: the rate gives way by as little as that
/// takes, the loop's end falls on a frame, and what lies behind it is dropped.
Sound resampled(const Sound& sound, int rateHz);

}  // namespace stratovane::content_tool
