#pragma once

#include <optional>

#include "journal/Entries.h"

namespace run {

/** Which play comes when. Plays are numbered through; a round is all plays of the plan once. */
class PlayOrder
{
public:
    /** @param night is borrowed; it has at least one play */
    explicit PlayOrder(const journal::NightBegin& night) : mNight(night) {}

    /** The play is one of those that are to be played. */
    bool has(int play) const { return mNight.mUntilFailure || play < playsPerRound(); }

    const journal::StagedCase& caseOf(int play) const { return mNight.mCases[caseIndexOf(play)]; }

    size_t caseIndexOf(int play) const
    {
        return static_cast<size_t>(mNight.mOrder[static_cast<size_t>(play % playsPerRound())]);
    }

    /** Which play of its case it is, from 1. */
    int repetitionOf(int play) const;

    int playsPerRound() const { return static_cast<int>(mNight.mOrder.size()); }

private:
    const journal::NightBegin& mNight;
};

/** Where a night goes on after it was cut off. */
struct ResumePoint
{
    int mPlay = 0;            ///< the first that has not ended
    quint64 mFindings = 0;    ///< of that play, when it was begun before
    int mRuns = 0;            ///< of the program so far
    quint64 mAllFindings = 0; ///< of all plays
    bool mHasFailed = false;  ///< a play that has ended
};

ResumePoint resumePointOf(const std::vector<journal::Entry>& entries);

} // namespace run
