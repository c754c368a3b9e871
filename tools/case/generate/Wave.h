#pragma once

#include <QtGlobal>
#include <array>

#include "generate/WaveParameters.h"

/** The samples of a wave: one per degree of phase, computed when asked for. */
class Wave
{
public:
    using Values = std::array<qint32, kChannelCount>;

    /** Requires: problemOf(parameters) is empty. */
    explicit Wave(WaveParameters parameters);

    /** Signal frequency in hertz. */
    float frequency() const { return mParameters.mFrequency; }

    /** Samples of all periods. */
    qint64 sampleCount() const { return mSampleCount; }

    /** Seconds from the first sample. */
    double timeOf(qint64 sample) const;

    /** The values of all channels, rounded to the nearest integer. */
    Values valuesOf(qint64 sample) const;

private:
    double valueOf(qint64 sample, std::size_t channel) const;
    bool isDisturbed(qint64 sample, const Disturbance& disturbance) const;

    WaveParameters mParameters;
    qint64 mSampleCount;
};
