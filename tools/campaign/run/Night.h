#pragma once

#include "judge/PlayJudge.h"
#include "run/PlayRecorder.h"
#include "run/ScheduledNight.h"

namespace run {

/**
 * A night at the desk, where all that arrives is judged: a state machine that has no clock, no
 * process and no file of its own. It is told what happens, acts through the desk and writes the
 * journal. So a night can be simulated in a moment.
 *
 * One play at a time: the gap, the command, the case, and the steady signal after it. A program
 * that died, hangs or plays what nobody asked for is started anew, with a judge of its own.
 *
 * Borrows all that it is given.
 */
class Night : public ScheduledNight
{
public:
    /** Deaths in a row, without a play between them that passed, at which the night gives up. */
    static constexpr int kMaxDeaths = 2;

    Night(const journal::NightBegin& night, const explain::PlayPlan& plan,
          const NightOptions& options, Desk& desk, journal::JournalSink& sink);

    /** The sandbox tells of an event. What happens at one moment is told in the order below. */
    void add(const explain::Event& event, const Moment& now);

    /** Records have arrived. */
    void add(const SampleRecord* records, size_t count, const Moment& now);

    /**
     * The program has ended, and all events and records of it were added.
     * @param problem what else is known of it, when the events do not tell how it ended
     * @param restBytes that arrived after the last whole record
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
    void goOn();
    bool wasClockSet() const;
    void watchSilence();
    void watchPlay();
    void loseProgram();
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
    std::optional<judge::PlayJudge> mJudge; ///< of this run; none: nobody listens any more
    qint64 mPhaseFromNs = 0;                ///< signal that was heard when the state began
    Moment mCommandedAt;
    qint64 mLastHeardNs = 0;               ///< on the steady clock
    qint64 mStopNs = 0;                    ///< on the steady clock: when it was asked to end
    std::string mHow;                      ///< the program died, in words
    int mDeaths = 0;                       ///< since the last play that passed
    int mKeptOfPlay = 0;                   ///< files with samples
    std::optional<journal::NightEnd> mEnd; ///< how the night ends when the program has
};

} // namespace run
