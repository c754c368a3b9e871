#pragma once

#include <deque>
#include <variant>

#include "explain/CommandLedger.h"
#include "explain/PassMerger.h"
#include "explain/Resynchronizer.h"
#include "explain/RunEvents.h"

namespace explain {

/** What is known of a recording before it comes, and what is wanted. */
struct JudgeOptions
{
    /** Events will come; without them what was commanded is taken from what was played. */
    bool mHasEvents = false;

    bool mIsFromStart = false; ///< it begins with the first sample that the program played
    size_t mMaxListed = FindingCounts::kMaxListed; ///< findings of each kind that are output
};

/**
 * Finds out from a recording of the driver what was played when, and what is wrong with it. Records
 * and events go in piece by piece as they come, and what is found out comes out as soon as it is
 * certain, in memory that does not depend on their length.
 *
 * The judge stays RecordWindow::kAhead records behind what arrived, because what a record means may
 * show only later. Data goes one way: RunEvents and RecordWindow hold it, PlaybackTracker
 * follows it, Resynchronizer finds out where that fails, PassMerger makes segments.
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

    /** Takes the records that arrived next and judges what can be judged. */
    void add(const SampleRecord* records, size_t count);

    /** Number of records in the events. */
    size_t recordsInEvents() const { return mEvents.samples(); }

    /** The whole passes that were played last, which are not output yet; nothing if all are. */
    const std::optional<PlayedSegment>& playedLast() const { return mMerger.segment(); }

    /** What was found so far. */
    const FindingCounts& findings() const { return mFindings; }

    /** Whether the events say that the run is over. */
    bool isRunOver() const { return mEvents.isRunOver(); }

    /**
     * Judges what is left, and outputs the verdict. Nothing may be added after it.
     * @param restBytes of a record after the last whole one
     * @param isComplete whether nobody is still writing the recording: only then are such a rest,
     *        and another number of records than in the events, faults
     */
    void finish(size_t restBytes, bool isComplete);

private:
    /** A line to output before the segment that it is in. */
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
