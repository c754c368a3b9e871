#pragma once

#include "journal/Entries.h"

namespace journal {

/**
 * Checks the order of the steps of a night. It rejects what vx-campaign never writes, such as a
 * play out of order, an end without a beginning, or a play that passed with a finding. So it finds
 * where a journal that was edited contradicts itself.
 */
class StepOrder
{
public:
    /** @throws CaseError that begins with the field that contradicts the previous steps */
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
    bool mIsPlaying = false;       ///< that play has begun
    bool mHasFindings = false;     ///< that play has findings, possibly from before a cut
    int mRun = 0;                  ///< of the program
    bool mIsOver = false;
};

} // namespace journal
