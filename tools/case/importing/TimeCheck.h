#pragma once

#include <string>
#include <vector>

#include "resampling/SampleTimes.h"
#include "waveform/SignalSource.h"

namespace importing {

/** The part of a recording that is imported, in s. */
struct TimeRange
{
    double mFrom;
    double mTo;
};

/**
 * What is odd about the times of the samples in a range, for the user. Throws CaseError where
 * fewer than four samples are taken of a period: they show no waveform.
 * @param seconds the stamps of the samples @param times what was made of them
 */
std::vector<std::string> checkTimes(const waveform::SignalDescription& description,
                                    const std::vector<double>& seconds,
                                    const resampling::SampleTimes& times, const TimeRange& range,
                                    double nominalHz);

} // namespace importing
