#include "engine/transport.h"

#include <cmath>

#include "mrx/events.h"

namespace stratovane {

void Transport::setSampleRate(double rate) {
    beatFactor_ = 1.0 / (rate * 60.0);
    knownTempo_ = 0;
    time_.beatsPerFrame = static_cast<double>(time_.tempo) * beatFactor_;
}

const MusicalTime& Transport::sync(const TimeInfo* info) {
    time_.changes = 0;
    if (info == nullptr) return time_;
    constexpr double jumpBeats = 0.2;
    auto given = [info](std::int32_t flag) { return (info->flags & flag) != 0; };

    const bool tempoGiven =
        given(TimeInfo::tempoValid) && std::isfinite(info->tempo) && info->tempo > 0;
    if (tempoGiven && info->tempo != knownTempo_) {
        knownTempo_ = info->tempo;
        time_.tempo = static_cast<float>(info->tempo);
        time_.beatsPerFrame = info->tempo * beatFactor_;
        time_.changes |= changeTempo;
    }
    const bool playing = given(TimeInfo::playing);
    if (playing != (playing_ != 0)) {
        playing_ = playing;
        time_.changes |= playing ? changeStarted : changeStopped;
    }
    if (given(TimeInfo::signatureValid) && info->timeSignatureNumerator > 0 &&
        info->timeSignatureDenominator > 0) {
        const float beatsPerBar = static_cast<float>(info->timeSignatureNumerator) * 4.0f /
                                  static_cast<float>(info->timeSignatureDenominator);
        if (beatsPerBar != time_.beatsPerBar) {
            time_.beatsPerBar = beatsPerBar;
            time_.changes |= changeSignature | changePosition;
            if (given(TimeInfo::barStartValid) && std::isfinite(info->barStart)) {
                time_.barStart = info->barStart;
                if (!playing) time_.position = info->barStart;
                time_.changes |= changePosition;
            }
        }
    }
    if (playing && given(TimeInfo::positionValid) && std::isfinite(info->musicalPosition)) {
        if (std::fabs(time_.position - info->musicalPosition) > jumpBeats)
            time_.changes |= changePosition;
        time_.position = info->musicalPosition;
        if (time_.barStart > time_.position) {
            // The last bar line at or before the position, on the grid the bar start is part of.
            const double perBar = static_cast<double>(time_.beatsPerBar);
            time_.barStart += std::floor((time_.position - time_.barStart) / perBar) * perBar;
        }
    }
    if (time_.changes != 0 && playing) time_.changes |= changePlaying;
    return time_;
}

}  // namespace stratovane
