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
 * Remarks on the times of the samples in a range. Throws CaseError if there are fewer than four
 * samples per period: they are not a waveform.
 * @param seconds time stamps of the samples @param times the times found from them
 */
std::vector<std::string> checkTimes(const waveform::SignalDescription& description,
                                    const std::vector<double>& seconds,
                                    const resampling::SampleTimes& times, const TimeRange& range,
                                    double nominalHz);

} // namespace importing
