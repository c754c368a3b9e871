#pragma once

#include <memory>

#include "explain/EventTimeline.h"
#include "explain/Resynchronizer.h"
#include "explain/Stretches.h"

namespace explain {

/**
 * Says of a recording of the driver what was played when, and what is wrong with it. Goes over the
 * recording once, in memory that does not depend on its length.
 *
 * Borrows the plan and the output.
 */
class Explanation
{
public:
    /**
     * @param events what vx-sandbox --events wrote; may be null: what was commanded is then taken
     *        from what was played
     */
    Explanation(const PlayPlan& plan, const std::string& recording,
                std::unique_ptr<EventTimeline> events, ExplanationOutput& output);

    /**
     * @return whether all is as it should be
     * @throws CaseError when a file cannot be read
     */
    bool run();

private:
    struct GivenCommand
    {
        SentCommand mSent;
        int mOffers = 0; ///< cases that ended while it waited
        qint64 mFirstOfferNs = 0;
    };

    bool takeNext();
    void played(qint64 stampNs);
    void offerCommands();
    void offerDueCommands();
    void judgeNewCommands();
    void giveUpOverdueCommand(qint64 nowNs);
    void tell(const std::vector<PlayedPass>& passes);
    void reportCommands(const PlayedPass& played);
    void breakOff();
    void repair();
    void passDifferent(const Repair& found);
    qint64 judgedStampNs(bool fits);
    void passForeign(const Repair& found);
    void addTimeJump();
    void goOnElsewhere(const Repair& found);
    void addFinding(FindingKind kind, size_t count, const std::string& text);
    void report(const Finding& finding);
    std::string differenceText() const;
    std::string nextPlaceText() const;
    void finish();
    void finishEvents();

    const PlayPlan& mPlan;
    ExplanationOutput& mOutput;
    RecordWindow mWindow;
    std::unique_ptr<EventTimeline> mEvents;
    Hypotheses mHypotheses;
    Resynchronizer mResynchronizer;
    Stretches mStretches;
    FindingCounts mFindings;
    std::optional<qint64> mLastStampNs;
    NextStep mNextStep = NextStep::Known;
    std::optional<size_t> mOfferedAt;   ///< place of the last record before which commands were due
    std::vector<ControlCommand> mValid; ///< commands, and below what else is known of each
    std::vector<GivenCommand> mGiven;
    size_t mReportedCommands = 0;
    int mReportedChanges = 0;
};

} // namespace explain
