#include "explain/Judge.h"

#include <fmt/format.h>

#include <algorithm>

#include "explain/SampleText.h"

namespace explain {

namespace {
/** With more possible beginnings than this, more records than the first decide between them. */
constexpr size_t kMaxFronts = 64;
} // namespace

Judge::Judge(const PlayPlan& plan, const JudgeOptions& options, ExplanationOutput& output)
    : mPlan(plan),
      mHasEvents(options.mHasEvents),
      mIsFromStart(options.mIsFromStart),
      mOutput(output),
      mTracker(PlaybackTracker::atStart(plan)),
      mResynchronizer(plan),
      mCommands(plan.configurationCount(), plan.longestCaseNs()),
      mMerger(plan, !options.mHasEvents, output),
      mFindings(options.mMaxListed)
{
}

void Judge::add(const SampleRecord* records, size_t count)
{
    mWindow.append(records, count);
    judge(RecordWindow::kAhead);
}

/** Judges as long as more than this number of records are ahead. */
void Judge::judge(size_t keepAhead)
{
    while (mWindow.arrived() > keepAhead && (!mHasEvents || mEvents.covers(mWindow.position()))) {
        begin();
        offerDueCommands();
        if (!takeNext()) {
            repair();
        }
    }
}

/** Sets the positions where the recording may begin: where the simulator begins, or anywhere. */
void Judge::begin()
{
    if (mHasBegun) {
        return;
    }
    mHasBegun = true;
    if (mIsFromStart) {
        return;
    }
    const ContentSearch search(mPlan);
    std::vector<Positions> fronts = search.scan({contentOf(mWindow.next())});
    if (fronts.size() > kMaxFronts) {
        fronts = search.scan(mWindow.proof(0));
    }
    mTracker.addCutFronts(fronts, mHasEvents);
}

bool Judge::takeNext()
{
    const qint64 stampNs = waveform::stampNsOf(mWindow.next());
    std::optional<qint64> stepNs;
    if (mLastStampNs && mNextStep == NextStep::Known) {
        stepNs = stampNs - *mLastStampNs;
    }
    if (!mTracker.keep(contentOf(mWindow.next()), stepNs)) {
        return false;
    }
    pass(stampNs);
    return true;
}

/** Accepts the next record as the next sample of the likeliest hypothesis. */
void Judge::pass(qint64 stampNs)
{
    report(mTracker.takeEnded());
    const Arrival arrival{mWindow.position(), stampNs};
    if (mWindow.arrived() > 1) {
        const SampleContent next = contentOf(mWindow[size_t{1}]);
        mTracker.advance(arrival, &next);
    } else {
        mTracker.advance(arrival);
    }
    mLastStampNs = stampNs;
    mNextStep = NextStep::Known;
    mWindow.advance();
}

void Judge::offerDueCommands()
{
    if (mHasEvents && mTracker.isBetweenCases()) {
        offerCommands();
    }
}

void Judge::offerCommands()
{
    if (mOfferedAt == mWindow.position() || !mLastStampNs) {
        return;
    }
    mOfferedAt = mWindow.position();
    const qint64 stampNs = waveform::stampNsOf(mWindow.next());
    const qint64 arrivalNs = mEvents.arrivalNs(mWindow.position()).value_or(stampNs);
    takeCommands(arrivalNs);
    giveUpOverdueCommand(arrivalNs);
    // The case before a gap may have ended before the command arrived.
    const bool isGap =
        mNextStep == NextStep::Known && !mTracker.allowsStep(stampNs - *mLastStampNs);
    mTracker.offer(mCommands.valid(), {arrivalNs, stampNs}, isGap ? 0 : kCostOfWaitingCommand);
}

/** Judges the commands that were given up to this time. */
void Judge::takeCommands(std::optional<qint64> untilNs)
{
    while (const std::optional<Event> sent = mEvents.takeCommand(untilNs)) {
        if (!sent->mAccepted) {
            addRunFinding(FindingKind::NotSent, 1,
                          fmt::format("command '{}' at {} was not sent{}{}", sent->mText,
                                      stampText(sent->mTimeNs), sent->mReason.empty() ? "" : ": ",
                                      sent->mReason));
        } else if (const std::optional<CommandOutcome> rejected = mCommands.add(*sent)) {
            if (mTracker.isSettled()) {
                mOutput.add(*rejected);
            } else {
                mPending.push_back({mWindow.position() - 1, *rejected});
            }
        }
    }
}

void Judge::giveUpOverdueCommand(qint64 nowNs)
{
    const size_t next = mTracker.likeliest().mKnownCommands;
    if (const std::optional<CommandOutcome> waiting = mCommands.giveUpOverdue(next, nowNs)) {
        addNotFollowed(*waiting);
        mTracker.excludeCommands(next + 1);
    }
}

void Judge::addNotFollowed(const CommandOutcome& waiting)
{
    addFinding(FindingKind::NotFollowed, 1,
               fmt::format("command '{}' given at {} is not followed", waiting.mText,
                           stampText(waiting.mArrivalNs)));
}

void Judge::report(const std::vector<PlayedPasses>& all)
{
    for (const PlayedPasses& played : all) {
        if (!mPending.empty() && mPending.front().mRecord <= played.mLast.mRecord) {
            mMerger.flushOthers(mPlan.files()[played.mFile]);
            reportPending(played.mLast.mRecord);
        }
        reportCommands(played);
        mMerger.add(played);
    }
}

void Judge::reportPending(size_t untilRecord)
{
    for (; !mPending.empty() && mPending.front().mRecord <= untilRecord; mPending.pop_front()) {
        std::visit([this](const auto& line) { mOutput.add(line); }, mPending.front().mLine);
    }
}

/** Reports the command that caused a pass, or that no command was given. */
void Judge::reportCommands(const PlayedPasses& played)
{
    if (mHasEvents && played.mUnknownCommands > mReportedChanges) {
        mMerger.flush();
        const Finding finding{
            FindingKind::NotGiven, played.mFirst.mRecord, 1,
            fmt::format("{} begins without a command", mPlan.files()[played.mFile].name())};
        if (mFindings.add(finding)) {
            mOutput.add(finding);
        }
    }
    mReportedChanges = std::max(mReportedChanges, played.mUnknownCommands);
    while (std::optional<CommandOutcome> command =
               mCommands.takeUnreported(played.mKnownCommands)) {
        mMerger.flush();
        command->mFirstSampleArrivalNs = played.mLastEffect.mArrivalNs;
        command->mFirstStampNs = played.mLastEffect.mStampNs;
        mOutput.add(*command);
    }
}

/** Closes what arrived so far: the next record does not continue it. */
void Judge::breakOff()
{
    if (mLastStampNs) {
        report(mTracker.breakOff({mWindow.position() - 1, *mLastStampNs}));
    }
    reportPending(mWindow.position());
    mMerger.flush();
}

void Judge::repair()
{
    const Repair found = mResynchronizer.repair(mWindow, mTracker, mLastStampNs, mNextStep);
    switch (found.mKind) {
        case Repair::Kind::Differs:
            passDifferent(found);
            return;
        case Repair::Kind::Twice:
            addFinding(FindingKind::Twice, found.mSamples,
                       fmt::format("{} samples are repeated", found.mSamples));
            mWindow.advance(found.mRecords);
            return;
        case Repair::Kind::Foreign:
            passForeign(found);
            return;
        case Repair::Kind::TimeJump:
            addTimeJump();
            mNextStep = NextStep::Judged;
            return;
        case Repair::Kind::Missing:
        case Repair::Kind::Elsewhere:
            continueElsewhere(found);
            return;
    }
}

void Judge::continueElsewhere(const Repair& found)
{
    breakOff();
    const std::string expected = expectedText();
    const bool goesBack = mLastStampNs && mNextStep == NextStep::Known &&
                          waveform::stampNsOf(mWindow.next()) <= *mLastStampNs;
    if (goesBack) {
        addTimeJump();
    }
    mTracker = found.mAfter;
    mTracker.forgetPasses();
    mTracker.excludeCommands(mCommands.reported());
    mNextStep = NextStep::Judged;
    mOfferedAt.reset();
    if (found.mKind == Repair::Kind::Missing) {
        addFinding(
            FindingKind::Missing, found.mSamples,
            fmt::format("{} samples are missing before it, from {} on", found.mSamples, expected));
    } else if (mLastStampNs || mIsFromStart) {
        addFinding(FindingKind::Elsewhere, 1,
                   fmt::format("it is {} instead of {}", expectedText(), expected));
    }
}

void Judge::passDifferent(const Repair& found)
{
    mTracker = found.mAfter;
    for (size_t i = 0; i < found.mRecords; ++i) {
        offerDueCommands();
        const bool fits = mTracker.keep(contentOf(mWindow.next()), std::nullopt);
        const qint64 stampNs = judgedStampNs(fits);
        if (!fits) {
            addFinding(FindingKind::Differs, 1,
                       differenceText(mTracker.likeliestFile(), mTracker.likeliest().mSample,
                                      contentOf(mWindow.next())));
            mTracker.splitUnequal();
        }
        pass(stampNs);
    }
}

/** The time of the next record. If its stamp is wrong and its content, too, the expected time. */
qint64 Judge::judgedStampNs(bool fits)
{
    const qint64 stampNs = waveform::stampNsOf(mWindow.next());
    if (!mLastStampNs || mNextStep != NextStep::Known ||
        mTracker.allowsStep(stampNs - *mLastStampNs)) {
        return stampNs;
    }
    if (!fits) {
        return *mLastStampNs + mTracker.nextStep();
    }
    addTimeJump();
    return stampNs;
}

/** Skips foreign records as if they were the expected ones, to keep track of time and commands. */
void Judge::passForeign(const Repair& found)
{
    breakOff();
    addFinding(
        FindingKind::Foreign, found.mSamples,
        fmt::format("{} samples are in no file; {} was expected", found.mSamples, expectedText()));
    for (size_t i = 0; i < found.mRecords; ++i) {
        offerDueCommands();
        if (mLastStampNs) {
            *mLastStampNs += mTracker.nextStep();
        }
        mTracker.splitUnequal();
        mTracker.advance();
        mWindow.advance();
    }
    mTracker.forgetPasses();
    const bool continues =
        mWindow.arrived() > 0 && mTracker.allows(contentOf(mWindow.next()), std::nullopt);
    mNextStep = continues ? NextStep::Known : NextStep::Doubtful;
}

void Judge::addTimeJump()
{
    addFinding(
        FindingKind::TimeJump, 1,
        fmt::format("the time stamp is {} ns after the one before, expected {} ns",
                    waveform::stampNsOf(mWindow.next()) - *mLastStampNs, mTracker.nextStep()));
}

/** Outputs a finding as soon as it is known what was played before it; mostly at once. */
void Judge::addFinding(FindingKind kind, size_t count, const std::string& text)
{
    const Finding finding{kind, mWindow.position(), count, text};
    if (mFindings.add(finding)) {
        mPending.push_back({finding.mRecord, finding});
    }
    report(mTracker.takeEnded());
    if (mTracker.isSettled()) {
        mMerger.flushOthers(mTracker.likeliestFile());
        reportPending(finding.mRecord);
    }
}

void Judge::addRunFinding(FindingKind kind, size_t count, const std::string& text)
{
    const Finding finding{kind, mWindow.position(), count, text};
    if (mFindings.add(finding)) {
        mOutput.add(finding);
    }
}

std::string Judge::expectedText() const
{
    return sampleText(mTracker.likeliestFile(), mTracker.likeliest().mSample);
}

void Judge::finish(size_t restBytes, bool isComplete)
{
    mEvents.finish();
    judge(0);
    breakOff();
    const bool isRestFault = restBytes > 0 && (isComplete || mEvents.isRunOver());
    if (isRestFault) {
        addFinding(FindingKind::Incomplete, restBytes,
                   fmt::format("only {} bytes of it", restBytes));
    }
    if (mHasEvents) {
        finishCommands();
        finishRun(isComplete || mEvents.isRunOver());
    }
    mOutput.add(Verdict{mWindow.position(), isRestFault ? 0 : restBytes, mFindings});
}

void Judge::finishCommands()
{
    takeCommands(std::nullopt);
    const bool isSilent = shouldBeSilent();
    while (const std::optional<CommandOutcome> waiting = mCommands.takeUnreported()) {
        if (!isSilent && mCommands.isNotFollowed(*waiting, mEvents.lastTimeNs())) {
            addNotFollowed(*waiting);
        } else {
            mOutput.add(*waiting);
        }
    }
}

void Judge::finishRun(bool isComplete)
{
    const size_t recorded = mWindow.position();
    const size_t inEvents = mEvents.samples();
    if (mEvents.haveBlocks() && inEvents != recorded && isComplete) {
        addRunFinding(
            FindingKind::OtherEvents, std::max(inEvents, recorded) - std::min(inEvents, recorded),
            fmt::format("the events have {} samples, the recording has {}", inEvents, recorded));
    }
    if (mEvents.refusedSamples() > 0 && mEvents.isRunOver()) {
        addRunFinding(FindingKind::Refused, mEvents.refusedSamples(),
                      fmt::format("the driver refused all blocks up to the end of the run: {} "
                                  "samples",
                                  mEvents.refusedSamples()));
    }
    if (!mEvents.death().empty()) {
        addRunFinding(FindingKind::Died, 1, mEvents.death());
    }
    finishBlocks();
}

/** Reports a program that hung: it sent no blocks at the end of the run. */
void Judge::finishBlocks()
{
    if (!mEvents.endedWhilePlaying() || !mEvents.lastBlockNs() || shouldBeSilent()) {
        return;
    }
    const qint64 silentNs = mEvents.lastTimeNs() - *mEvents.lastBlockNs();
    if (silentNs > maxSilenceNs()) {
        addRunFinding(FindingKind::Silent, 1,
                      fmt::format("no block in the last {:.1f} s of the run",
                                  static_cast<double>(silentNs) / waveform::kSecondInNs));
    }
}

/** Max time between two blocks of a playing program. */
qint64 Judge::maxSilenceNs() const
{
    return kBlocksAhead * mPlan.longestBlockNs() + kWaitToleranceNs;
}

/** Whether the configuration commanded up to shortly after the last block has no samples. */
bool Judge::shouldBeSilent() const
{
    const qint64 endNs = mEvents.lastBlockNs().value_or(0) + maxSilenceNs();
    const int playing = mCommands.continuousAt(endNs).value_or(mPlan.continuousConfiguration());
    return mPlan.firstEntry(playing) == PlayPlan::kNone;
}

} // namespace explain
