#pragma once

#include <limits>

#include "SampleRecord.h"

/**
 * The time between two samples as the sample writer derives it from a signal frequency: for the
 * writer itself and for whoever predicts its time stamps.
 */

/** Truncates toward zero; what does not fit becomes the nearest value, NaN becomes 0. */
inline quint32 saturatingToUInt(float value)
{
    constexpr float kBeyond = 4294967296.0F;
    if (!(value > 0.0F)) {
        return 0;
    }
    return value >= kBeyond ? std::numeric_limits<quint32>::max() : static_cast<quint32>(value);
}

/**
 * ns from one sample to the next, for a frequency in Hz. Computed in single precision; the
 * receivers expect its rounding.
 */
inline quint32 sampleStepOf(float frequency)
{
    constexpr float kNanosecondsPerSecondF = 1e9F;
    constexpr float kSamplesPerPeriodF = kSamplesPerPeriod;
    return saturatingToUInt(kNanosecondsPerSecondF / frequency / kSamplesPerPeriodF);
}

/** A step of 0 would stop the clock, one of a second or more would outrun its carry. */
inline bool isPlayableStep(quint32 step)
{
    constexpr quint32 kNanosecondsPerSecond = 1'000'000'000;
    return step > 0 && step < kNanosecondsPerSecond;
}

/** What is played, in Hz, as long as no playable frequency has been met. */
inline constexpr float kDefaultFrequencyHz = 50.0F;
