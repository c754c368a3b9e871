#pragma once

#include <deque>
#include <variant>

#include "explain/CommandLedger.h"
#include "explain/PassMerger.h"
#include "explain/Resynchronizer.h"
#include "explain/RunEvents.h"

namespace explain {

/** What is known of a recording in advance, and what is wanted. */
struct JudgeOptions
{
    /** Events will be added; without them, the commands are concluded from what was played. */
    bool mHasEvents = false;

    bool mIsFromStart = false; ///< it begins with the first sample that was played
    size_t mMaxListed = FindingCounts::kMaxListed; ///< findings of each kind that are output
};

/**
 * Finds out from a recording of the driver what was played when, and its faults. Records and events
 * are added as they arrive, and results are output as soon as they are certain, in constant memory.
 *
 * The judge stays RecordWindow::kAhead records behind the latest one, because later records may
 * decide about earlier ones. Data goes one way: RunEvents and RecordWindow hold it, PlaybackTracker
 * follows it, Resynchronizer handles what does not fit, PassMerger makes segments.
 *
 * Borrows the plan and the output.
 */
class Judge
{
public:
    Judge(const PlayPlan& plan, const JudgeOptions& options, ExplanationOutput& output);

    /**
     * Takes the events that happened next. Records are judged once the events cover them, so
     * add the event of a block before its records. Requires: hasEvents.
     */
    void add(const Event& event) { mEvents.add(event); }

    /** Takes the next records and judges those that can be judged. */
    void add(const SampleRecord* records, size_t count);

    /** Number of records in the events. */
    size_t recordsInEvents() const { return mEvents.samples(); }

    /** The latest complete passes, if they are not output yet. */
    const std::optional<PlayedSegment>& playedLast() const { return mMerger.segment(); }

    /** The findings so far. */
    const FindingCounts& findings() const { return mFindings; }

    /** Whether the events say that the run is over. */
    bool isRunOver() const { return mEvents.isRunOver(); }

    /**
     * Judges the rest, and outputs the verdict. Nothing may be added after it.
     * @param restBytes of a record after the last whole one
     * @param isComplete whether no process still writes the recording: only then such a rest, or a
     * number of records that differs from the events, is a fault
     */
    void finish(size_t restBytes, bool isComplete);

private:
    /** A line that is output before its segment. */
    struct PendingLine
    {
        size_t mRecord;
        std::variant<Finding, CommandOutcome> mLine;
    };

    void judge(size_t keepAhead);
    void begin();
    bool takeNext();
    void pass(qint64 stampNs);
    void offerDueCommands();
    void offerCommands();
    void takeCommands(std::optional<qint64> untilNs);
    void giveUpOverdueCommand(qint64 nowNs);
    void addNotFollowed(const CommandOutcome& waiting);
    void report(const std::vector<PlayedPasses>& all);
    void reportPending(size_t untilRecord);
    void reportCommands(const PlayedPasses& played);
    void breakOff();
    void repair();
    void passDifferent(const Repair& found);
    qint64 judgedStampNs(bool fits);
    void passForeign(const Repair& found);
    void addTimeJump();
    void continueElsewhere(const Repair& found);
    void addFinding(FindingKind kind, size_t count, const std::string& text);
    void addRunFinding(FindingKind kind, size_t count, const std::string& text);
    std::string expectedText() const;
    void finishCommands();
    void finishRun(bool isComplete);
    void finishBlocks();
    qint64 maxSilenceNs() const;
    bool shouldBeSilent() const;

    const PlayPlan& mPlan;
    bool mHasEvents;
    bool mIsFromStart;
    ExplanationOutput& mOutput;
    RecordWindow mWindow;
    RunEvents mEvents;
    PlaybackTracker mTracker;
    Resynchronizer mResynchronizer;
    CommandLedger mCommands;
    PassMerger mMerger;
    FindingCounts mFindings;
    std::deque<PendingLine> mPending; ///< while it is ambiguous what was played
    bool mHasBegun = false;
    std::optional<qint64> mLastStampNs;
    NextStep mNextStep = NextStep::Known;
    std::optional<size_t> mOfferedAt; ///< the last record before which commands were due
    int mReportedChanges = 0;
};

} // namespace explain
