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

/** A program that sends nothing for so long hangs: a minute is what it catches up with. */
constexpr qint64 kMaxSilenceNs = 90 * kSecondInNs;

/** What loading takes for each sample, at most. */
constexpr qint64 kLoadingNsPerSample = 10'000;

/** What a play may take beyond all that is known to take time. */
constexpr qint64 kPlayToleranceNs = 10 * kSecondInNs;

/** Two clocks agree as well as this, and as one that is being corrected by a thousandth does. */
constexpr qint64 kClockToleranceNs = 100'000'000;
constexpr qint64 kMaxClockRate = 1000;

/** The steady signal may pass so often until it is certain that a case like it was played. */
constexpr qint64 kMaxSteadyPasses = 10;

/** The sandbox kills a program that does not end 5 s after it was asked to. */
constexpr qint64 kMaxStopNs = 15 * kSecondInNs;

/** Samples are kept of so many findings of a play. */
constexpr int kMaxKeptOfPlay = 3;

/** Of samples that are wrong in a row, so many are kept. */
constexpr size_t kMaxKeptWrong = 2 * size_t{kSamplesPerPeriod};

qint64 steadyNsOf(const explain::PlayPlan& plan)
{
    const int entry = plan.firstEntry(0);
    return entry == explain::PlayPlan::kNone ? 0 : plan.fileOf(entry).durationNs();
}

/** How far behind what arrives the judge is, and how far ahead the program. */
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
    : mPlan(plan),
      mDesk(desk),
      mRecorder(desk),
      mCourse(night, options, 2 * steadyNsOf(plan) + lagNs(plan) / 2, sink)
{
}

void Night::begin(const Moment& now)
{
    mCourse.setTime(now);
    mCourse.begin();
    tick(now);
}

void Night::resume(const ResumePoint& point, const std::map<std::string, std::string>& environment,
                   const Moment& now)
{
    mCourse.setTime(now);
    mCourse.resume(point, environment);
    mRun = point.mRuns;
    tick(now);
}

void Night::add(const explain::Event& event, const Moment& now)
{
    mCourse.setTime(now);
    if (!mJudge) {
        return;
    }
    const bool isRefused = event.mKind == explain::Event::Kind::Command && !event.mAccepted;
    if (isRefused && isProgramUp()) {
        find(explain::nameOf(explain::FindingKind::NotSent).mKey,
             fmt::format("command '{}' was not sent: {}", event.mText, event.mReason));
        loseProgram();
        return;
    }
    if (event.mKind == explain::Event::Kind::Block && !event.mAccepted && !mJudge->hasBegun()) {
        find(explain::nameOf(explain::FindingKind::Missing).mKey,
             fmt::format("{} samples are missing, the first of all", event.mSamples));
    }
    if (event.mKind == explain::Event::Kind::ProgramEnd) {
        mHow = event.mText;
    }
    mJudge->add(event);
}

void Night::add(const SampleRecord* records, size_t count, const Moment& now)
{
    mCourse.setTime(now);
    if (!mJudge) {
        return;
    }
    mLastHeardNs = now.mSteadyNs;
    mRecorder.add(records, count);
    mJudge->add(records, count);
    takeOutcomes();
    stopIfJournalFailed();
}

void Night::programEnded(const std::string& problem, size_t restBytes, const Moment& now)
{
    mCourse.setTime(now);
    const bool wasAsked = mState == State::Stopping;
    mState = State::Stopping;
    mHow = mHow.empty() ? problem : mHow;
    if (mHow.empty() && !wasAsked) {
        mHow = "the program ended by itself";
    }
    if (!wasAsked) {
        countDeath();
    }
    if (mJudge) {
        judgeRest(restBytes);
    }
    mRecorder.stop();
    mCourse.chronicle().write(journal::ProgramEnded{mRun, mHow});
    nextProgram();
}

/** The program has ended: a play that was on has failed, unless it is only interrupted. */
void Night::judgeRest(size_t restBytes)
{
    mJudge->finish(restBytes);
    takeOutcomes();
    if (!mHow.empty() && !mIsDeathFound) {
        find(explain::nameOf(explain::FindingKind::Died).mKey, mHow);
    }
    if (mCourse.chronicle().play() && mCourse.chronicle().findings() > 0) {
        endPlay(mJudge->soFar());
    }
    mJudge.reset();
}

void Night::interrupt(const Moment& now)
{
    mCourse.setTime(now);
    if (mState == State::Over) {
        return;
    }
    mEnd = NightEnd{NightEnd::Reason::Interrupted, ""};
    if (mState == State::Waiting) {
        finish();
    } else if (isProgramUp()) {
        stopProgram();
    }
}

void Night::tick(const Moment& now)
{
    mCourse.setTime(now);
    if (mState == State::Waiting && mCourse.isDue()) {
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
    if (mEnd || !mCourse.hasNext() || !problem().empty()) {
        finish();
        return;
    }
    startProgram();
}

void Night::startProgram()
{
    mCourse.chronicle().write(journal::ProgramStarted{++mRun});
    mJudge.emplace(mPlan);
    mHow.clear();
    mIsDeathFound = false;
    mLastHeardNs = mCourse.now().mSteadyNs;
    beginPlay();
    mDesk.start(mRun);
}

void Night::beginPlay()
{
    mCourse.beginNext();
    mKeptOfPlay = 0;
    const journal::StagedCase& next = mCourse.currentCase();
    if (!next.mExpected.empty()) {
        mRecorder.begin(expectedName(next, *mCourse.chronicle().play()));
    }
    mState = State::Gap;
    mPhaseFromNs = mJudge->heardNs();
}

void Night::sendCommand()
{
    const journal::StagedCase& next = mCourse.currentCase();
    const std::string command = 's' + std::to_string(next.mNumber);
    mCourse.chronicle().write(journal::CommandSent{*mCourse.chronicle().play(), command});
    mRecorder.endBefore();
    mState = State::Playing;
    mPhaseFromNs = mJudge->heardNs();
    mCommandedAt = mCourse.now();
    mJudge->expect(next.mNumber, next.mSamples);
    mDesk.send(command);
}

/** What comes out after the program was given up is not listened to. */
void Night::takeOutcomes()
{
    for (const judge::Outcome& outcome : mJudge->take()) {
        if (mJudge) {
            std::visit([this](const auto& it) { take(it); }, outcome);
        }
    }
}

void Night::take(const judge::Found& found)
{
    const bool isDeath = found.mKind == explain::nameOf(explain::FindingKind::Died).mKey;
    mIsDeathFound = mIsDeathFound || isDeath;
    mCourse.chronicle().find(
        {std::nullopt, found.mKind, found.mText, found.mStampNs, keepSamples(found)});
}

void Night::take(const judge::Played& played)
{
    if (mCourse.chronicle().play()) {
        endPlay(played);
    }
    if (played.mEnding == judge::Played::Ending::Lost && isProgramUp()) {
        loseProgram();
    } else {
        goOn();
    }
}

void Night::find(const std::string& kind, const std::string& text)
{
    mCourse.chronicle().find({std::nullopt, kind, text, std::nullopt, ""});
}

/** From one period before to one period after what is wrong. */
std::string Night::keepSamples(const judge::Found& found)
{
    const Chronicle& chronicle = mCourse.chronicle();
    if (found.mIsOfRun || !chronicle.lists(found.mKind) || mKeptOfPlay >= kMaxKeptOfPlay) {
        return "";
    }
    constexpr size_t kPeriod = kSamplesPerPeriod;
    const size_t first = found.mRecord - std::min(found.mRecord, kPeriod);
    const size_t end = found.mRecord + std::min(found.mCount, kMaxKeptWrong) + kPeriod;
    const std::vector<SampleRecord> samples = mJudge->samples().part(first, end);
    if (samples.empty()) {
        return "";
    }
    ++mKeptOfPlay;
    return mDesk.keep(chronicle.play()
                          ? fmt::format("{}-{}", mCourse.currentCase().mName, *chronicle.play())
                          : "night",
                      samples);
}

void Night::endPlay(const judge::Played& played)
{
    const quint64 wanted = mCourse.currentCase().mSamples;
    if (played.mSamples != wanted && mCourse.chronicle().findings() == 0) {
        find("incomplete", fmt::format("{} of {} samples arrived", played.mSamples, wanted));
    }
    const PlayVerdict verdict =
        mCourse.endPlay({0, PlayVerdict::Passed, played.mFirstStampNs, played.mLastStampNs,
                         played.mSamples, wasClockSet() ? std::nullopt : played.mDelayNs, 0});
    mRecorder.endPlay(verdict == PlayVerdict::Passed);
    mDeaths = verdict == PlayVerdict::Passed ? 0 : mDeaths;
}

/** Whether the wall clock was set since the command: then no time measured with it is true. */
bool Night::wasClockSet() const
{
    const qint64 passedNs = mCourse.now().mSteadyNs - mCommandedAt.mSteadyNs;
    const qint64 wallNs = mCourse.now().mWallNs - mCommandedAt.mWallNs;
    return std::abs(wallNs - passedNs) > kClockToleranceNs + passedNs / kMaxClockRate;
}

/** After a play. */
void Night::goOn()
{
    if (mState != State::Playing && mState != State::Gap) {
        return;
    }
    if (mCourse.hasNext()) {
        beginPlay();
    } else if (mCourse.reason() == NightEnd::Reason::Done) {
        mState = State::Closing;
        mPhaseFromNs = mJudge->heardNs();
    } else {
        stopProgram();
    }
}

void Night::watchSilence()
{
    const qint64 silentNs = mCourse.now().mSteadyNs - mLastHeardNs;
    if (silentNs <= maxSilenceNs()) {
        return;
    }
    find(explain::nameOf(explain::FindingKind::Silent).mKey,
         fmt::format("no samples for {} s", silentNs / kSecondInNs));
    countDeath();
    loseProgram();
}

qint64 Night::maxSilenceNs() const
{
    const bool isLoading = mJudge->samples().arrived() == 0;
    return std::max(kMaxSilenceNs, 3 * explain::kBlocksAhead * mPlan.longestBlockNs()) +
           (isLoading ? samplesIn(mPlan) * kLoadingNsPerSample : 0);
}

/** Goes on when enough of the signal was heard. */
void Night::watchPlay()
{
    const qint64 heardNs = mJudge->heardNs() - mPhaseFromNs;
    if (mState == State::Playing) {
        if (heardNs > maxPlayNs()) {
            find("notPlayed", fmt::format("nothing came of the command within {} s of the signal",
                                          heardNs / kSecondInNs));
            loseProgram();
        }
        return;
    }
    if (heardNs < mCourse.gapNs() || mJudge->samples().arrived() == 0) {
        return;
    }
    if (mState == State::Gap) {
        sendCommand();
    } else {
        stopProgram();
    }
}

/** Waiting for the end of a case, the play itself, what makes it certain, and the judge. */
qint64 Night::maxPlayNs() const
{
    return mPlan.longestCaseNs() + explain::kWaitToleranceNs + mCourse.currentCase().mDurationNs +
           kMaxSteadyPasses * steadyNsOf(mPlan) + lagNs(mPlan) + kPlayToleranceNs;
}

/** The program does what it should not: the play that is on fails, and it is started anew. */
void Night::loseProgram()
{
    if (mCourse.chronicle().play()) {
        endPlay(mJudge->soFar());
    }
    mJudge.reset();
    stopProgram();
}

void Night::countDeath()
{
    ++mDeaths;
    if (mDeaths >= kMaxDeaths && mCourse.hasNext() && !mEnd) {
        mEnd = NightEnd{
            NightEnd::Reason::GaveUp,
            fmt::format("the program was lost {} times in a row; see program.log", mDeaths)};
    }
}

void Night::stopProgram()
{
    mState = State::Stopping;
    mStopNs = mCourse.now().mSteadyNs;
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
    mCourse.chronicle().write(mEnd.value_or(NightEnd{mCourse.reason(), ""}));
    mState = State::Over;
}

} // namespace run
