#include "run/Night.h"

#include <fmt/format.h>

#include <algorithm>

#include "explain/Costs.h"
#include "waveform/RecordStamp.h"

namespace run {

namespace {
using journal::NightEnd;
using journal::PlayVerdict;
using waveform::kSecondInNs;

/** A program that sends nothing for longer hangs. It may pause for a minute of clock difference. */
constexpr qint64 kMaxSilenceNs = 90 * kSecondInNs;

/** Max loading time per sample. */
constexpr qint64 kLoadingNsPerSample = 10'000;

/** Margin on the longest duration of a play, see maxPlayNs(). */
constexpr qint64 kPlayToleranceNs = 10 * kSecondInNs;

/** Two clocks agree within this and 1 / kMaxClockRate of the time, the max rate of a correction. */
constexpr qint64 kClockToleranceNs = 100'000'000;
constexpr qint64 kMaxClockRate = 1000;

/** Max passes of the steady signal until a case that resembles it is recognised. */
constexpr qint64 kMaxSteadyPasses = 10;

/** Max signal time to wait, before a command, for the stream to be on time. */
constexpr qint64 kMaxOffTimeNs = judge::ArrivalCheck::kMaxDriftNs;

/** Max time to stop. The sandbox kills a program that has not ended after 5 s. */
constexpr qint64 kMaxStopNs = 15 * kSecondInNs;

/** Max findings of a play whose samples are kept. */
constexpr int kMaxKeptOfPlay = 3;

/** Max wrong samples in a row that are kept. */
constexpr size_t kMaxKeptWrong = 2 * size_t{kSamplesPerPeriod};

qint64 steadyNsOf(const explain::PlayPlan& plan)
{
    const int entry = plan.firstEntry(0);
    return entry == explain::PlayPlan::kNone ? 0 : plan.fileOf(entry).durationNs();
}

/** How far the judge is behind the arriving samples, plus how far the program is ahead. */
qint64 lagNs(const explain::PlayPlan& plan)
{
    constexpr qint64 kBlocks = explain::RecordWindow::kAhead / kSamplesPerPeriod + 1;
    return (kBlocks + 2 * explain::kBlocksAhead) * plan.longestBlockNs();
}

qint64 samplesIn(const explain::PlayPlan& plan)
{
    qint64 samples = 0;
    for (const explain::PlayedFile& file : plan.files()) {
        samples += static_cast<qint64>(file.size());
    }
    return samples;
}
} // namespace

Night::Night(const journal::NightBegin& night, const explain::PlayPlan& plan,
             const NightOptions& options, Desk& desk, journal::JournalSink& sink)
    : ScheduledNight(night, options, 2 * steadyNsOf(plan) + lagNs(plan) / 2, sink),
      mPlan(plan),
      mDesk(desk),
      mRecorder(desk)
{
}

void Night::add(const explain::Event& event, const Moment& now)
{
    schedule().setTime(now);
    for (const std::string& remark : event.mRemarks) {
        playJournal().write(journal::Remark{remark});
    }
    if (!mJudge) {
        return;
    }
    const bool isRefused = event.mKind == explain::Event::Kind::Command && !event.mAccepted;
    if (isRefused && isProgramUp()) {
        find(explain::nameOf(explain::FindingKind::NotSent).mKey,
             fmt::format("command '{}' was not sent: {}", event.mText, event.mReason));
        giveUpProgram();
        return;
    }
    if (event.mKind == explain::Event::Kind::Block && !event.mAccepted && !mJudge->hasBegun()) {
        find(explain::nameOf(explain::FindingKind::Missing).mKey,
             fmt::format(
                 "the first {} samples of the run are missing, because the driver refused them",
                 event.mSamples));
    }
    mRefusedBlocks += event.mKind == explain::Event::Kind::Block && !event.mAccepted ? 1 : 0;
    if (event.mKind == explain::Event::Kind::ProgramEnd) {
        mEndText = event.mText; // the judge reports it as a finding, too
    }
    mJudge->add(event);
}

void Night::add(const SampleRecord* records, size_t count, const Moment& now)
{
    schedule().setTime(now);
    if (!mJudge) {
        return;
    }
    mLastReceivedNs = now.mSteadyNs;
    mRefusedBlocks = 0;
    if (mJudge->samples().arrived() == 0) {
        schedule().restartPlayTime();
    }
    mRecorder.add(records, count);
    mJudge->add(records, count);
    takeOutcomes();
    stopIfJournalFailed();
}

void Night::programEnded(const std::string& problem, size_t restBytes, const Moment& now)
{
    schedule().setTime(now);
    const bool wasAsked = mState == State::Stopping;
    mState = State::Stopping;
    if (mEndText.empty()) {
        mEndText = problem.empty() && !wasAsked ? "the program ended by itself" : problem;
        if (mJudge && !mEndText.empty()) {
            find(explain::nameOf(explain::FindingKind::Died).mKey, mEndText);
        }
    }
    if (!wasAsked) {
        countDeath();
    }
    if (mJudge) {
        judgeRest(restBytes);
    }
    mRecorder.stop();
    schedule().endRun(mEndText);
    nextProgram();
}

/**
 * Ends the judging after the program has ended. A play in progress with findings fails; without any
 * it stays open.
 */
void Night::judgeRest(size_t restBytes)
{
    mJudge->finish(restBytes);
    takeOutcomes();
    if (playJournal().play() && playJournal().findings() > 0) {
        endPlay(mJudge->soFar());
    }
    mJudge.reset();
}

void Night::interrupt(const Moment& now)
{
    schedule().setTime(now);
    if (mState == State::Over) {
        return;
    }
    const bool isFirst = !mEnd || mEnd->mReason != NightEnd::Reason::Interrupted;
    mEnd = NightEnd{NightEnd::Reason::Interrupted, ""};
    if (!isFirst) {
        mJudge.reset();
        mDesk.kill();
    }
    if (!isFirst || mState == State::Waiting) {
        finish();
    } else if (isProgramUp()) {
        stopProgram();
    }
}

void Night::tick(const Moment& now)
{
    schedule().setTime(now);
    if (mState == State::Waiting && schedule().isDue()) {
        nextProgram();
    }
    if (isProgramUp()) {
        watchSilence();
    }
    if (isProgramUp()) {
        watchPlay();
    }
    if (mState == State::Stopping && now.mSteadyNs - mStopNs > kMaxStopNs) {
        mStopNs = now.mSteadyNs;
        mDesk.kill();
    }
    stopIfJournalFailed();
}

bool Night::isProgramUp() const
{
    return mState == State::Gap || mState == State::Playing || mState == State::Closing;
}

/** Starts the program for the next play, or ends the night. */
void Night::nextProgram()
{
    if (mEnd || !schedule().hasNext() || !problem().empty()) {
        finish();
        return;
    }
    startProgram();
}

void Night::startProgram()
{
    schedule().beginRun();
    mJudge.emplace(mPlan);
    mEndText.clear();
    mLastReceivedNs = schedule().now().mSteadyNs;
    mRefusedBlocks = 0;
    beginPlay();
    mDesk.start(schedule().run());
}

void Night::beginPlay()
{
    schedule().beginNext();
    mKeptOfPlay = 0;
    const journal::StagedCase& next = schedule().currentCase();
    if (!next.mExpected.empty()) {
        mRecorder.begin(expectedName(next, *playJournal().play()));
    }
    mState = State::Gap;
    mPhaseFromNs = mJudge->receivedNs();
}

void Night::sendCommand()
{
    const journal::StagedCase& next = schedule().currentCase();
    const std::string command = 's' + std::to_string(next.mNumber);
    playJournal().write(journal::CommandSent{*playJournal().play(), command});
    mRecorder.endBefore();
    mState = State::Playing;
    mPhaseFromNs = mJudge->receivedNs();
    mCommandedAt = schedule().now();
    mJudge->expect(next.mNumber, next.mSamples);
    mDesk.send(command);
}

/** Outcomes after the program was given up are ignored. */
void Night::takeOutcomes()
{
    for (const judge::Outcome& outcome : mJudge->take()) {
        if (mJudge) {
            std::visit([this](const auto& it) { take(it); }, outcome);
        }
    }
}

void Night::take(const judge::Finding& finding)
{
    playJournal().addFinding(
        {std::nullopt, finding.mKind, finding.mText, finding.mStampNs, keepSamples(finding)});
}

void Night::take(const judge::Played& played)
{
    if (playJournal().play()) {
        endPlay(played);
    }
    if (played.mEnding == judge::Played::Ending::Lost && isProgramUp()) {
        giveUpProgram();
    } else {
        continueNight();
    }
}

void Night::find(const std::string& kind, const std::string& text)
{
    playJournal().addFinding({std::nullopt, kind, text, std::nullopt, ""});
}

/** Keeps the samples from one period before to one period after the fault. */
std::string Night::keepSamples(const judge::Finding& finding)
{
    const PlayJournal& journal = playJournal();
    if (finding.mIsOfRun || !journal.lists(finding.mKind) || mKeptOfPlay >= kMaxKeptOfPlay) {
        return "";
    }
    constexpr size_t kPeriod = kSamplesPerPeriod;
    const size_t first = finding.mRecord - std::min(finding.mRecord, kPeriod);
    const size_t end = finding.mRecord + std::min(finding.mCount, kMaxKeptWrong) + kPeriod;
    const std::vector<SampleRecord> samples = mJudge->samples().part(first, end);
    if (samples.empty()) {
        return "";
    }
    ++mKeptOfPlay;
    return mDesk.keep(journal.play()
                          ? fmt::format("{}-{}", schedule().currentCase().mName, *journal.play())
                          : "night",
                      samples);
}

void Night::endPlay(const judge::Played& played)
{
    const quint64 wanted = schedule().currentCase().mSamples;
    if (played.mSamples != wanted && playJournal().findings() == 0) {
        find("incomplete", fmt::format("{} of {} samples arrived", played.mSamples, wanted));
    }
    const PlayVerdict verdict =
        schedule().endPlay({0, PlayVerdict::Passed, played.mFirstStampNs, played.mLastStampNs,
                            played.mSamples, wasClockSet() ? std::nullopt : played.mDelayNs, 0});
    mRecorder.endPlay(verdict == PlayVerdict::Passed);
    mDeaths = verdict == PlayVerdict::Passed ? 0 : mDeaths;
}

/** Whether the wall clock was set since the command, which makes times measured with it invalid. */
bool Night::wasClockSet() const
{
    const qint64 passedNs = schedule().now().mSteadyNs - mCommandedAt.mSteadyNs;
    const qint64 wallNs = schedule().now().mWallNs - mCommandedAt.mWallNs;
    return std::abs(wallNs - passedNs) > kClockToleranceNs + passedNs / kMaxClockRate;
}

/** Begins the next play, or the end of the night. */
void Night::continueNight()
{
    if (mState != State::Playing && mState != State::Gap) {
        return;
    }
    if (schedule().hasNext()) {
        beginPlay();
    } else if (schedule().reason() == NightEnd::Reason::Done) {
        mState = State::Closing;
        mPhaseFromNs = mJudge->receivedNs();
    } else {
        stopProgram();
    }
}

void Night::watchSilence()
{
    const qint64 silentNs = schedule().now().mSteadyNs - mLastReceivedNs;
    if (silentNs <= maxSilenceNs()) {
        return;
    }
    find(explain::nameOf(explain::FindingKind::Silent).mKey,
         fmt::format("no samples for {} s", silentNs / kSecondInNs) +
             (mRefusedBlocks == 0 ? ""
                                  : fmt::format("; the driver refused {} blocks", mRefusedBlocks)));
    countDeath();
    giveUpProgram();
}

qint64 Night::maxSilenceNs() const
{
    const bool isLoading = mJudge->samples().arrived() == 0;
    return std::max(kMaxSilenceNs, 3 * explain::kBlocksAhead * mPlan.longestBlockNs()) +
           (isLoading ? samplesIn(mPlan) * kLoadingNsPerSample : 0);
}

/** Continues after enough signal; before a command, after enough signal that was on time. */
void Night::watchPlay()
{
    if (mState == State::Playing) {
        const qint64 receivedNs = mJudge->receivedNs() - mPhaseFromNs;
        if (receivedNs > maxPlayNs()) {
            find("notPlayed",
                 fmt::format("the case was not played within {} s of signal after the command",
                             receivedNs / kSecondInNs));
            giveUpProgram();
        }
        return;
    }
    const qint64 fromNs =
        std::clamp(mJudge->offTimeNs(), mPhaseFromNs, mPhaseFromNs + kMaxOffTimeNs);
    if (mJudge->receivedNs() - fromNs < schedule().gapNs() || mJudge->samples().arrived() == 0) {
        return;
    }
    if (mState == State::Gap) {
        sendCommand();
    } else {
        stopProgram();
    }
}

/** Sum of: wait for the end of a case, the play itself, signal until it is recognised, judge. */
qint64 Night::maxPlayNs() const
{
    return mPlan.longestCaseNs() + explain::kWaitToleranceNs +
           schedule().currentCase().mDurationNs + kMaxSteadyPasses * steadyNsOf(mPlan) +
           lagNs(mPlan) + kPlayToleranceNs;
}

/** The program misbehaves: the play in progress fails, and the program is restarted. */
void Night::giveUpProgram()
{
    if (playJournal().play()) {
        endPlay(mJudge->soFar());
    }
    mJudge.reset();
    stopProgram();
}

void Night::countDeath()
{
    ++mDeaths;
    if (mDeaths >= kMaxDeaths && schedule().hasNext() && !mEnd) {
        mEnd =
            NightEnd{NightEnd::Reason::GaveUp,
                     fmt::format("the program failed {} times in a row; see program.log", mDeaths)};
    }
}

void Night::stopProgram()
{
    mState = State::Stopping;
    mStopNs = schedule().now().mSteadyNs;
    mDesk.stop();
}

void Night::stopIfJournalFailed()
{
    if (!problem().empty() && isProgramUp()) {
        stopProgram();
    }
}

void Night::finish()
{
    playJournal().write(mEnd.value_or(NightEnd{schedule().reason(), ""}));
    mState = State::Over;
}

} // namespace run
