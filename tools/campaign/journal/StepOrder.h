#pragma once

#include "journal/Entries.h"

namespace journal {

/**
 * Follows the steps of a night, and refuses what vx-campaign never writes: a play that is not the
 * next, an end without a beginning, a play that passed with a finding. So a journal that somebody
 * has changed is found where it contradicts itself.
 */
class StepOrder
{
public:
    /** @throws CaseError that begins with the field which contradicts the steps before */
    void add(const Step& step);

private:
    void take(const NightBegin& step);
    void take(const Resumed& step);
    void take(const ProgramStarted& step);
    void take(const PlayBegin& step);
    void take(const CommandSent& step);
    void take(const Finding& step);
    void take(const Remark& /*step*/) {}
    void take(const PlayEnd& step);
    void take(const ProgramEnded& step);
    void take(const NightEnd& step);

    void expectCurrent(int play) const;
    void expectVerdict(const PlayEnd& step) const;

    bool mIsObserved = true;
    bool mIsEndless = false;
    std::vector<quint64> mSamples; ///< of each play of a round
    int mNext = 0;                 ///< the first play that has not ended
    bool mIsPlaying = false;       ///< that one has begun
    bool mHasFindings = false;     ///< that one, before a cut as well
    int mRun = 0;                  ///< of the program
    bool mIsOver = false;
};

} // namespace journal
