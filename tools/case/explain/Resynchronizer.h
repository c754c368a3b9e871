#pragma once

#include <optional>

#include "explain/ContentSearch.h"
#include "explain/PlaybackTracker.h"
#include "explain/RecordWindow.h"

namespace explain {

/** What the time from the last record to the next one tells. */
enum class NextStep
{
    Known,    ///< it is that of the next sample, or something is wrong
    Doubtful, ///< nothing, unless it shows how many samples are missing
    Judged,   ///< nothing more: what is wrong with it has been said
};

/** Why a recording does not continue as it should, and how it continues instead. */
struct Repair
{
    enum class Kind
    {
        Differs,   ///< the next mRecords are others than they should be
        Missing,   ///< mSamples are missing before the next record
        Twice,     ///< the next mRecords were there before
        Foreign,   ///< the next mRecords are in no file
        TimeJump,  ///< the samples continue, their time stamps do not
        Elsewhere, ///< the samples of another position are played
    };

    Kind mKind;
    size_t mRecords;        ///< that are done with by this; 0 where what arrived is good again
    size_t mSamples;        ///< concerned
    PlaybackTracker mAfter; ///< for the next record
};

/**
 * Finds out what happened where a record does not fit: by its time stamp, by the records after
 * it, and by where the same samples stand in the files. Its work is bounded by what the window
 * shows.
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
