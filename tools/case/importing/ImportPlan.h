#pragma once

#include <string>
#include <vector>

#include "importing/ImportOptions.h"
#include "importing/RecordedSignal.h"
#include "resampling/PhaseTrack.h"
#include "resampling/Schedule.h"

namespace importing {

/** Times that are the same but for rounding, in s. */
inline constexpr double kRoundingOfSeconds = 1e-9;

/** At which instants of a recording the lines lie, and what its periods are. */
struct ImportPlan
{
    double mFrom = 0.0; ///< s in the recording
    double mTo = 0.0;
    double mNominalHz = 0.0;
    std::optional<resampling::PhaseTrack> mTrack; ///< of the fundamental, where it can be followed
    resampling::Schedule mSchedule;
    double mFirstPeriod = 0.0;    ///< s that the first period lasts
    double mLastPeriod = 0.0;     ///< s that the last period lasts
    double mLinesPerPeriod = 0.0; ///< of the first period
    double mLinesPerLastPeriod = 0.0;
    std::vector<std::string> mRemarks;

    /** Phase of the fundamental since mFrom, in periods. */
    double cyclesAt(double seconds) const;

    /** How long the period lasts that begins then, in s. */
    double periodFrom(double seconds) const;

    /** How long the period lasts that ends then, in s. */
    double periodBefore(double seconds) const;

    /** Lines in a second, where the schedule has the fewest. */
    double linesPerSecond() const;

    /** Number of lines of that many periods before the recording. */
    size_t linesOf(size_t periods) const;

    /** Time of the first of those lines, in s in the recording. */
    double beginBefore(size_t periods) const;
};

/** Throws CaseError for a range that is not in the recording, or is too long to be played. */
ImportPlan planImport(const waveform::SignalDescription& description,
                      const RecordedSignal& recorded, const resampling::SampleTimes& times,
                      const ChannelMap& map, const ImportOptions& options);

} // namespace importing
