// The motor of a rotary speaker's rotor, as both rotary types drive it.
#pragma once

#include <algorithm>

namespace stratovane {

/// Speed and angle of one rotor; angles wrap both ways, as a stopped motor creeps backwards by
/// fractions of its acceleration. Units are the caller's, per control tick. In double: a speed that
/// hovers about its target by the rounding of a float would drift off.
struct Rotor {
    double speed = 0;
    double angle = 0;

    /// One tick: the speed hovers within `acceleration` of its target.
    void turn(double target, double acceleration) {
        speed += speed < target ? acceleration : -acceleration;
        angle += speed;
    }
    /// Many ticks at once, without exact timing: `share` of the way to the target speed.
    void turn(double target, double share, double ticks) {
        speed += (target - speed) * share;
        angle += speed * ticks;
    }
    /// Brings the angle into (low, low + span].
    void wrapAbove(double low, double span) {
        while (angle > low + span) angle -= span;
        while (angle <= low) angle += span;
    }
    /// Brings the angle into [0, span).
    void wrapBelow(double span) {
        while (angle >= span) angle -= span;
        while (angle < 0) angle += span;
        if (angle >= span) angle = 0;  // a tiny negative angle rounds up to the span
    }
};

/// Share of the way that a rotor glides in a block: at most a tenth.
inline double blockShare(int frames, float rate) {
    return std::min(frames / static_cast<double>(rate), 0.1);
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
