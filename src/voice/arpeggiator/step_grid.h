// When the steps of a pattern fall.
#pragma once

namespace stratovane {

/// Step g falls on start + g * step; odd ones are late by swing thirds of a step. A changed swing
/// is taken over with the next odd step, so that no swung pair is split. Beats throughout. Audio
/// thread.
class StepGrid {
  public:
    struct Settings {
        double stepBeats = 0.25;
        float swing = 0;
        bool onBeat = false;  // steps fall on multiples of their length in song position
    };

    /// A pattern begins: at once, or on the beat.
    void begin(double now, const Settings& settings);
    /// The step length or the song position changed: the next step is the first after the one last
    /// played that is not before now, on the beat on a grid found anew.
    void retune(double now, const Settings& settings);
    /// The next step is the first after the one last played that is not before `earliest`.
    void resume(double earliest, const Settings& settings);
    /// The next step was played on the frame at `position`. Points that this frame has passed are
    /// skipped.
    void stepPlayed(double position, double beatsPerFrame, float swing);
    void move(double beats);

    double next() const { return next_; }
    bool nextIsOdd() const { return isOdd(index_); }
    double stepBeats() const { return step_; }
    /// As the steps scheduled last use it.
    float swing() const { return swing_; }

  private:
    static bool isOdd(double index);
    void findBeat(double now);
    void seek(double earliest, float swing);
    void schedule(double index, float swing);

    double start_ = 0, step_ = 0.25;
    double index_ = 0, next_ = 0;  // of the next step
    double last_ = 0;              // the step last played; minus infinity before the first
    float swing_ = 0;
};

}  // namespace stratovane
