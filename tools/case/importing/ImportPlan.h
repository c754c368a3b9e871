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

    /** The lines of the schedule in a second, the fewest. */
    double linesPerSecond() const;

    /** Lines that so many periods in front take. */
    size_t linesOf(size_t periods) const;

    /** When the first line of those would be played, in s in the recording. */
    double beginBefore(size_t periods) const;
};

/** Throws CaseError for a range that is not in the recording, or is too long to be played. */
ImportPlan planImport(const waveform::SignalDescription& description,
                      const RecordedSignal& recorded, const resampling::SampleTimes& times,
                      const ChannelMap& map, const ImportOptions& options);

} // namespace importing
