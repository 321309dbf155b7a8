// How far tempo stretches times that follow it.
#pragma once

namespace stratovane {

/// 1 at 120 quarter notes a minute or with `amount` 0; twice as long at 60 with `amount` 1. A tempo
/// of 0 or less counts as 120.
inline float tempoFactor(float tempo, float amount) {
    constexpr float reference = 120.0f;
    return (reference / (tempo > 0 ? tempo : reference) - 1) * amount + 1;
}

}  // namespace stratovane
