#pragma once

#include <optional>

#include "journal/Entries.h"

namespace run {

/** The order of plays, which are numbered from 0. A round is all plays of the plan once. */
class PlayOrder
{
public:
    /** @param night is borrowed; it has at least one play */
    explicit PlayOrder(const journal::NightBegin& night) : mNight(night) {}

    /** Whether the play belongs to the night. */
    bool has(int play) const { return mNight.mUntilFailure || play < playsPerRound(); }

    const journal::StagedCase& caseOf(int play) const { return mNight.mCases[caseIndexOf(play)]; }

    size_t caseIndexOf(int play) const
    {
        return static_cast<size_t>(mNight.mOrder[static_cast<size_t>(play % playsPerRound())]);
    }

    /** Number of the play among those of its case, from 1. */
    int repetitionOf(int play) const;

    int playsPerRound() const { return static_cast<int>(mNight.mOrder.size()); }

private:
    const journal::NightBegin& mNight;
};

/** Where an interrupted night continues. */
struct ResumePoint
{
    int mPlay = 0;            ///< the first that has not ended
    quint64 mFindings = 0;    ///< of that play, if it had begun
    int mRuns = 0;            ///< of the program so far
    quint64 mAllFindings = 0; ///< of all plays
    bool mHasFailed = false;  ///< whether a play has failed
    bool mIsComplete = false; ///< whether nothing is left to play
};

ResumePoint resumePointOf(const std::vector<journal::Entry>& entries);

} // namespace run
