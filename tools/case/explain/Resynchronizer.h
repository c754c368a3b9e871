#pragma once

#include <optional>

#include "explain/ContentSearch.h"
#include "explain/PlaybackTracker.h"
#include "explain/RecordWindow.h"

namespace explain {

/** What the time from the last record to the next one means. */
enum class NextStep
{
    Known,    ///< it is the step of the next sample, or there is a fault
    Doubtful, ///< nothing, but it may show how many samples are missing
    Judged,   ///< nothing more: its fault has been reported
};

/** Why a recording does not continue as expected, and how it continues instead. */
struct Repair
{
    enum class Kind
    {
        Differs,   ///< the next mRecords differ from the expected ones
        Missing,   ///< mSamples are missing before the next record
        Twice,     ///< the next mRecords repeat those before
        Foreign,   ///< the next mRecords are in no file
        TimeJump,  ///< the samples continue, their time stamps do not
        Elsewhere, ///< the samples of another position are played
    };

    Kind mKind;
    size_t mRecords;        ///< handled by this repair; 0 if the next record fits again
    size_t mSamples;        ///< that are concerned
    PlaybackTracker mAfter; ///< for the next record
};

/**
 * Finds out what happened if a record does not fit: by its time stamp, by the records after it, and
 * by the positions of equal samples in the files. The window bounds its work.
 */
class Resynchronizer
{
public:
    explicit Resynchronizer(const PlayPlan& plan) : mPlan(plan), mSearch(plan) {}

    /**
     * @param expected what should have come next
     * @param lastStampNs of the record before; nothing at the beginning of the recording
     * Requires: there is a next record.
     */
    Repair repair(const RecordWindow& window, const PlaybackTracker& expected,
                  std::optional<qint64> lastStampNs, NextStep step) const;

private:
    std::optional<Repair> repairByStamp(const RecordWindow& window, const PlaybackTracker& expected,
                                        qint64 lastStampNs) const;
    std::optional<Repair> missingWithinCase(const RecordWindow& window,
                                            const PlaybackTracker& expected, qint64 gapNs) const;
    Repair repairByContent(const RecordWindow& window, const PlaybackTracker& expected,
                           std::optional<qint64> lastStampNs, NextStep step) const;
    PlaybackTracker elsewhere(const RecordWindow& window, const PlaybackTracker& expected,
                              size_t offset) const;
    Repair movedTo(const PlaybackTracker& found, const PlaybackTracker& expected,
                   std::optional<qint64> gapNs) const;

    const PlayPlan& mPlan;
    ContentSearch mSearch;
};

} // namespace explain
