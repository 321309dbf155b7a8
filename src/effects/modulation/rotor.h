// The motor of a rotary speaker's rotor, as both rotary types drive it.
#pragma once

#include <algorithm>

namespace stratovane {

/// Speed and angle of one rotor; angles wrap both ways, as a stopped motor creeps backwards by
/// fractions of its acceleration. Units are the caller's, per control tick.
struct Rotor {
    float speed = 0;
    float angle = 0;

    /// One tick: the speed hovers within `acceleration` of its target.
    void turn(float target, float acceleration) {
        speed += speed < target ? acceleration : -acceleration;
        angle += speed;
    }
    /// Many ticks at once, without exact timing: `share` of the way to the target speed.
    void turn(float target, float share, float ticks) {
        speed += (target - speed) * share;
        angle += speed * ticks;
    }
    /// Brings the angle into (low, low + span].
    void wrapAbove(float low, float span) {
        while (angle > low + span) angle -= span;
        while (angle <= low) angle += span;
    }
    /// Brings the angle into [0, span).
    void wrapBelow(float span) {
        while (angle >= span) angle -= span;
        while (angle < 0) angle += span;
        if (angle >= span) angle = 0;  // a tiny negative angle rounds up to the span
    }
};

/// Share of the way that a rotor glides in a block: at most a tenth.
inline float blockShare(int frames, float rate) {
    return std::min(static_cast<float>(frames) / rate, 0.1f);
}

/// Counts the blocks in which a rotor takes its speed at once, as after loading a patch.
class SpeedJump {
  public:
    void arm() { blocks_ = 2; }
    /// Once a block.
    bool due() { return blocks_ > 0 && blocks_-- > 0; }

  private:
    int blocks_ = 2;
};

}  // namespace stratovane
