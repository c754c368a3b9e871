#include "explain/Explanation.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/CaseError.h"

namespace explain {

namespace {
/** A command that waits for more than two cases and longer than this is not going to be taken. */
constexpr qint64 kLongestWaitNs = 1'000'000'000;

std::string placeText(const PlayedFile& file, size_t sample)
{
    return fmt::format("sample {} of {}", sample + 1, file.mName);
}

std::string fieldName(size_t field)
{
    constexpr size_t kBeforeChannels = 2;
    if (field < kBeforeChannels) {
        return field == 0 ? "auxiliary word" : "flag word";
    }
    return fmt::format("channel {}", field - kBeforeChannels);
}

std::string valueText(size_t field, quint32 value)
{
    constexpr size_t kBeforeChannels = 2;
    return field < kBeforeChannels ? std::to_string(value)
                                   : std::to_string(static_cast<qint32>(value));
}
} // namespace

Explanation::Explanation(const PlayPlan& plan, const std::string& recording,
                         std::unique_ptr<EventTimeline> events, ExplanationOutput& output)
    : mPlan(plan),
      mOutput(output),
      mWindow(recording),
      mEvents(std::move(events)),
      mHypotheses(Hypotheses::atStart(plan)),
      mResynchronizer(plan),
      mStretches(plan, mEvents == nullptr, output)
{
}

bool Explanation::run()
{
    if (mWindow.ahead() == 0) {
        throw base::CaseError(mWindow.name() + ": holds no sample");
    }
    mHypotheses.addPlaces(mPlan.firstPlacesOf(contentOf(mWindow[0])));
    while (mWindow.ahead() > 0) {
        offerDueCommands();
        if (!takeNext()) {
            repair();
        }
    }
    finish();
    return mFindings.isClean();
}

bool Explanation::takeNext()
{
    const SampleRecord& record = mWindow[0];
    const qint64 stampNs = waveform::stampNsOf(record);
    std::optional<qint64> stepNs;
    if (mLastStampNs && mNextStep == NextStep::Known) {
        stepNs = stampNs - *mLastStampNs;
    }
    if (!mHypotheses.keep(contentOf(record), stepNs)) {
        return false;
    }
    played(stampNs);
    return true;
}

/** The next record is the next sample of the likeliest. */
void Explanation::played(qint64 stampNs)
{
    tell(mHypotheses.takeEnded(false));
    mHypotheses.advance(Arrival{mWindow.position(), stampNs});
    mLastStampNs = stampNs;
    mNextStep = NextStep::Known;
    mWindow.advance();
}

void Explanation::offerDueCommands()
{
    if (mEvents && mHypotheses.isBetweenCases()) {
        offerCommands();
    }
}

void Explanation::offerCommands()
{
    if (mOfferedAt == mWindow.position() || !mLastStampNs) {
        return;
    }
    mOfferedAt = mWindow.position();
    const qint64 stampNs = waveform::stampNsOf(mWindow[0]);
    const qint64 arrivalNs = mEvents->arrivalNs(mWindow.position()).value_or(stampNs);
    judgeNewCommands();
    giveUpOverdueCommand(arrivalNs);
    mHypotheses.offer(mValid, {arrivalNs, stampNs});
}

void Explanation::judgeNewCommands()
{
    for (; !mEvents->commands().empty(); mEvents->commands().pop_front()) {
        const SentCommand& sent = mEvents->commands().front();
        const ControlCommand command(QString::fromStdString(sent.mText + "\n"),
                                     mPlan.configurationCount());
        if (command.isValid()) {
            mValid.push_back(command);
            mGiven.push_back({sent});
            continue;
        }
        std::string problem = command.error();
        std::replace(problem.begin(), problem.end(), '\n', ' ');
        mOutput.add(CommandOutcome{sent.mText, sent.mArrivalNs, problem, std::nullopt, 0});
    }
}

void Explanation::giveUpOverdueCommand(qint64 nowNs)
{
    const size_t next = mHypotheses.likeliest().mKnownCommands;
    if (next == mGiven.size()) {
        return;
    }
    GivenCommand& waiting = mGiven[next];
    if (waiting.mOffers == 0) {
        waiting.mFirstOfferNs = nowNs;
    }
    if (++waiting.mOffers <= 2 || nowNs - waiting.mFirstOfferNs <= kLongestWaitNs) {
        return;
    }
    addFinding(FindingKind::NotFollowed, 1,
               fmt::format("command '{}' given at {} is not followed", waiting.mSent.mText,
                           stampText(waiting.mSent.mArrivalNs)));
    mHypotheses.giveUpCommand();
    mReportedCommands = std::max(mReportedCommands, next + 1);
}

void Explanation::tell(const std::vector<PlayedPass>& passes)
{
    for (const PlayedPass& pass : passes) {
        reportCommands(pass);
        mStretches.add(pass);
    }
}

/** Tells of the command that brought a pass, and of one that nobody gave. */
void Explanation::reportCommands(const PlayedPass& played)
{
    if (mEvents && played.mUnknownCommands > mReportedChanges) {
        mStretches.flush();
        report({FindingKind::NotGiven, played.mStart.mFirst.mRecord, 1,
                fmt::format("{} begins without a command", mPlan.files()[played.mFile].mName)});
    }
    mReportedChanges = std::max(mReportedChanges, played.mUnknownCommands);
    for (; mReportedCommands < played.mKnownCommands; ++mReportedCommands) {
        mStretches.flush();
        const SentCommand& sent = mGiven[mReportedCommands].mSent;
        mOutput.add(CommandOutcome{sent.mText, sent.mArrivalNs, "", played.mLastEffect.mArrivalNs,
                                   played.mLastEffect.mStampNs});
    }
}

/** What arrived so far is done with: the next record does not follow from it. */
void Explanation::breakOff()
{
    if (mLastStampNs) {
        tell(mHypotheses.breakOff(*mLastStampNs));
    }
    mStretches.flush();
}

void Explanation::repair()
{
    const Repair found = mResynchronizer.repair(mWindow, mHypotheses, mLastStampNs, mNextStep);
    switch (found.mKind) {
        case Repair::Kind::Differs:
            passDifferent(found);
            return;
        case Repair::Kind::Twice:
            addFinding(FindingKind::Twice, found.mSamples,
                       fmt::format("{} samples come twice", found.mSamples));
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
            goOnElsewhere(found);
            return;
    }
}

void Explanation::goOnElsewhere(const Repair& found)
{
    breakOff();
    const std::string expected = nextPlaceText();
    const bool goesBack = mLastStampNs && mNextStep == NextStep::Known &&
                          waveform::stampNsOf(mWindow[0]) <= *mLastStampNs;
    if (goesBack) {
        addTimeJump();
    }
    mHypotheses = found.mAfter;
    mHypotheses.forgetPasses();
    mNextStep = NextStep::Judged;
    mOfferedAt.reset();
    if (found.mKind == Repair::Kind::Missing) {
        addFinding(
            FindingKind::Missing, found.mSamples,
            fmt::format("{} samples are missing before it, from {} on", found.mSamples, expected));
    } else if (mLastStampNs) {
        addFinding(FindingKind::Elsewhere, 1,
                   fmt::format("it is {} instead of {}", nextPlaceText(), expected));
    }
}

void Explanation::passDifferent(const Repair& found)
{
    mHypotheses = found.mAfter;
    for (size_t i = 0; i < found.mRecords; ++i) {
        offerDueCommands();
        const bool fits = mHypotheses.keep(contentOf(mWindow[0]), std::nullopt);
        const qint64 stampNs = judgedStampNs(fits);
        if (!fits) {
            addFinding(FindingKind::Differs, 1, differenceText());
        }
        played(stampNs);
    }
}

/** When the next record was played; where its stamp is as wrong as the rest, as it should be. */
qint64 Explanation::judgedStampNs(bool fits)
{
    const qint64 stampNs = waveform::stampNsOf(mWindow[0]);
    if (!mLastStampNs || mNextStep != NextStep::Known ||
        mHypotheses.allowStep(stampNs - *mLastStampNs)) {
        return stampNs;
    }
    if (!fits) {
        return *mLastStampNs + mHypotheses.nextStep();
    }
    addTimeJump();
    return stampNs;
}

/** Goes over them as over those that should have come, so that time and commands are not lost. */
void Explanation::passForeign(const Repair& found)
{
    breakOff();
    addFinding(FindingKind::Foreign, found.mSamples,
               fmt::format("{} samples stand in no file; {} was expected", found.mSamples,
                           nextPlaceText()));
    for (size_t i = 0; i < found.mRecords; ++i) {
        offerDueCommands();
        if (mLastStampNs) {
            *mLastStampNs += mHypotheses.nextStep();
        }
        mHypotheses.advance();
        mWindow.advance();
    }
    mHypotheses.forgetPasses();
    const bool goesOn =
        mWindow.ahead() > 0 && mHypotheses.allow(contentOf(mWindow[0]), std::nullopt);
    mNextStep = goesOn ? NextStep::Known : NextStep::Doubtful;
}

void Explanation::addTimeJump()
{
    addFinding(
        FindingKind::TimeJump, 1,
        fmt::format("the time stamp is {} ns after the one before, expected {} ns",
                    waveform::stampNsOf(mWindow[0]) - *mLastStampNs, mHypotheses.nextStep()));
}

void Explanation::addFinding(FindingKind kind, size_t count, const std::string& text)
{
    tell(mHypotheses.takeEnded(true));
    mStretches.flushOthers(mHypotheses.likeliestFile());
    report({kind, mWindow.position(), count, text});
}

void Explanation::report(const Finding& finding)
{
    if (mFindings.add(finding)) {
        mOutput.add(finding);
    }
}

std::string Explanation::nextPlaceText() const
{
    return placeText(mHypotheses.likeliestFile(), mHypotheses.likeliest().mSample);
}

std::string Explanation::differenceText() const
{
    const SampleContent found = contentOf(mWindow[0]);
    const SampleContent& expected =
        mHypotheses.likeliestFile().mSamples[mHypotheses.likeliest().mSample];
    std::string text;
    for (size_t field = 0; field < found.size(); ++field) {
        if (found[field] != expected[field]) {
            text += fmt::format("{} {} has {} instead of {}", text.empty() ? ":" : ",",
                                fieldName(field), valueText(field, found[field]),
                                valueText(field, expected[field]));
        }
    }
    return nextPlaceText() + text;
}

void Explanation::finish()
{
    breakOff();
    if (mWindow.restBytes() > 0) {
        addFinding(FindingKind::Incomplete, mWindow.restBytes(),
                   fmt::format("only {} bytes of it", mWindow.restBytes()));
    }
    if (mEvents) {
        finishEvents();
    }
    mOutput.add(Verdict{mWindow.position(), mFindings});
}

void Explanation::finishEvents()
{
    mEvents->finish();
    judgeNewCommands();
    for (; mReportedCommands < mGiven.size(); ++mReportedCommands) {
        const SentCommand& sent = mGiven[mReportedCommands].mSent;
        mOutput.add(CommandOutcome{sent.mText, sent.mArrivalNs, "", std::nullopt, 0});
    }
    const size_t recorded = mWindow.position();
    if (mEvents->samples() != recorded) {
        addFinding(FindingKind::OtherEvents,
                   std::max(mEvents->samples(), recorded) - std::min(mEvents->samples(), recorded),
                   fmt::format("the events tell of {} samples, the recording has {}",
                               mEvents->samples(), recorded));
    }
}

} // namespace explain
