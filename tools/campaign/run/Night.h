#pragma once

#include "judge/PlayJudge.h"
#include "run/PlayRecorder.h"
#include "run/ScheduledNight.h"

namespace run {

/**
 * A night at the desk, where every sample is judged. It is a state machine without a clock, a
 * process or a file. It is told what happens, acts through the desk and writes the journal. So a
 * test can simulate a night in no time.
 *
 * It plays one case at a time: the gap, the command, the case, and the steady signal after it. A
 * program that died, hangs or plays something unasked is restarted, with a new judge.
 *
 * Borrows all its arguments.
 */
class Night : public ScheduledNight
{
public:
    /**
     * Number of deaths in a row, without a passed play between them, after which the night gives
     * up.
     */
    static constexpr int kMaxDeaths = 2;

    Night(const journal::NightBegin& night, const explain::PlayPlan& plan,
          const NightOptions& options, Desk& desk, journal::JournalSink& sink);

    /** Adds an event of the sandbox. For one moment, call these functions in the order below. */
    void add(const explain::Event& event, const Moment& now);

    /** Adds records that have arrived. */
    void add(const SampleRecord* records, size_t count, const Moment& now);

    /**
     * Reports the end of the program, after all its events and records.
     * @param problem how it ended, if the events do not contain that
     * @param restBytes number of bytes after the last whole record
     */
    void programEnded(const std::string& problem, size_t restBytes, const Moment& now);

    void interrupt(const Moment& now) override;
    void tick(const Moment& now) override;
    bool isOver() const override { return mState == State::Over; }

private:
    enum class State
    {
        Waiting,  ///< for the time to start
        Gap,      ///< before the command of a play
        Playing,  ///< the case was commanded
        Closing,  ///< the gap after the last play
        Stopping, ///< the program was asked to end
        Over,
    };

    void startProgram();
    void beginPlay();
    void sendCommand();
    void takeOutcomes();
    void take(const judge::Finding& finding);
    void take(const judge::Played& played);
    void find(const std::string& kind, const std::string& text);
    std::string keepSamples(const judge::Finding& finding);
    void endPlay(const judge::Played& played);
    void continueNight();
    bool wasClockSet() const;
    void watchSilence();
    void watchPlay();
    void giveUpProgram();
    void countDeath();
    void stopProgram();
    void judgeRest(size_t restBytes);
    void nextProgram();
    void finish();
    void stopIfJournalFailed();
    bool isProgramUp() const;
    qint64 maxSilenceNs() const;
    qint64 maxPlayNs() const;

    const explain::PlayPlan& mPlan;
    Desk& mDesk;
    PlayRecorder mRecorder;
    State mState = State::Waiting;
    std::optional<judge::PlayJudge> mJudge; ///< of this run; none: nothing more is judged
    qint64 mPhaseFromNs = 0;                ///< signal that had arrived when the state began
    Moment mCommandedAt;
    qint64 mLastReceivedNs = 0;            ///< on the steady clock
    int mRefusedBlocks = 0;                ///< by the driver since then
    qint64 mStopNs = 0;                    ///< on the steady clock: when it was asked to end
    std::string mEndText;                  ///< the program died, in words
    int mDeaths = 0;                       ///< since the last play that passed
    int mKeptOfPlay = 0;                   ///< files with samples
    std::optional<journal::NightEnd> mEnd; ///< how the night ends, once the program has ended
};

} // namespace run
