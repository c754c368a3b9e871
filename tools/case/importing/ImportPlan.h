#pragma once

#include <string>
#include <vector>

#include "importing/ImportOptions.h"
#include "importing/RecordedSignal.h"
#include "resampling/PhaseTrack.h"
#include "resampling/Schedule.h"

namespace importing {

/** Times that are closer, in s, differ only by rounding. */
inline constexpr double kRoundingOfSeconds = 1e-9;

/** The instants of a recording at which its lines lie, and its periods. */
struct ImportPlan
{
    double mFrom = 0.0; ///< s in the recording
    double mTo = 0.0;
    double mNominalHz = 0.0;
    std::optional<resampling::PhaseTrack> mTrack; ///< of the fundamental, if it can be followed
    resampling::Schedule mSchedule;
    double mFirstPeriod = 0.0;    ///< length of the first period in s
    double mLastPeriod = 0.0;     ///< length of the last period in s
    double mLinesPerPeriod = 0.0; ///< of the first period
    double mLinesPerLastPeriod = 0.0;
    std::vector<std::string> mRemarks;

    /** Phase of the fundamental since mFrom, in periods. */
    double cyclesAt(double seconds) const;

    /** Length in s of the period that begins at this time. */
    double periodFrom(double seconds) const;

    /** Length in s of the period that ends at this time. */
    double periodBefore(double seconds) const;

    /** The smallest number of lines per second in the schedule. */
    double linesPerSecond() const;

    /** Number of lines for these periods before the recording. */
    size_t linesOf(size_t periods) const;

    /** Time of the first of those lines, in s of the recording. */
    double beginBefore(size_t periods) const;
};

/** Throws CaseError for a range that is not in the recording, or too long to be played. */
ImportPlan planImport(const waveform::SignalDescription& description,
                      const RecordedSignal& recorded, const resampling::SampleTimes& times,
                      const ChannelMap& map, const ImportOptions& options);

} // namespace importing
