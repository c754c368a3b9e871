#include "report/NightSummary.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/CaseError.h"

namespace report {

namespace {
constexpr int kStatusBad = 1;

Outcome outcomeOf(journal::PlayVerdict verdict, bool isObserved)
{
    switch (verdict) {
        case journal::PlayVerdict::Passed:
            return isObserved ? Outcome::Passed : Outcome::NotObserved;
        case journal::PlayVerdict::NotObserved:
            return Outcome::NotObserved;
        case journal::PlayVerdict::Failed:
            break;
    }
    return Outcome::Failed;
}

NightState stateOf(journal::NightEnd::Reason reason)
{
    switch (reason) {
        case journal::NightEnd::Reason::Done:
            return NightState::Done;
        case journal::NightEnd::Reason::Interrupted:
            return NightState::Interrupted;
        case journal::NightEnd::Reason::FirstFailure:
            return NightState::FirstFailure;
        case journal::NightEnd::Reason::GaveUp:
            break;
    }
    return NightState::GaveUp;
}

std::optional<DelaySpread> spreadOf(std::vector<qint64> delays)
{
    if (delays.empty()) {
        return std::nullopt;
    }
    std::sort(delays.begin(), delays.end());
    return DelaySpread{delays.front(), delays[(delays.size() - 1) / 2], delays.back()};
}

/** Builds the summary from the steps of a journal, in their order. */
class SummaryBuilder
{
public:
    explicit SummaryBuilder(size_t entries) : mEntries(entries) {}

    void add(const journal::Entry& entry);
    NightSummary finish();

    void operator()(const journal::NightBegin& night);
    void operator()(const journal::Resumed& resumed);
    void operator()(const journal::ProgramStarted&) { ++mSummary.mProgramRuns; }
    void operator()(const journal::PlayBegin& begin);
    void operator()(const journal::CommandSent&) {}
    void operator()(const journal::Finding& finding);
    void operator()(const journal::Remark& remark) { mSummary.mRemarks.push_back(remark.mText); }
    void operator()(const journal::PlayEnd& end);
    void operator()(const journal::ProgramEnded& end);
    void operator()(const journal::NightEnd& end);

private:
    PlaySummary& playAt(int index);
    void addPlay();
    void finishPlay(PlaySummary* play);
    void finishCases();

    size_t mEntries;
    qint64 mNowNs = 0; ///< time of the entry that is being added
    NightSummary mSummary;
};

void SummaryBuilder::add(const journal::Entry& entry)
{
    const bool isFirst = mSummary.mSessions.empty();
    if (isFirst != std::holds_alternative<journal::NightBegin>(entry.mStep)) {
        throw base::CaseError(isFirst ? "the journal does not start with a night"
                                      : "the journal has a second night");
    }
    mNowNs = entry.mTimeNs;
    std::visit(*this, entry.mStep);
    mSummary.mSessions.back().mEndNs = mNowNs;
}

void SummaryBuilder::operator()(const journal::NightBegin& night)
{
    mSummary.mNight = night;
    mSummary.mSessions.push_back({mNowNs, mNowNs, night.mEnvironment});
    for (const journal::StagedCase& staged : night.mCases) {
        mSummary.mCases.emplace_back().mStaged = staged;
    }
    for (size_t i = 0; i < night.mOrder.size(); ++i) {
        addPlay();
    }
}

void SummaryBuilder::operator()(const journal::Resumed& resumed)
{
    mSummary.mSessions.push_back({mNowNs, mNowNs, resumed.mEnvironment});
    mSummary.mState = NightState::CutOff;
    mSummary.mReason.clear();
}

void SummaryBuilder::operator()(const journal::PlayBegin& begin)
{
    PlaySummary& play = playAt(begin.mPlay);
    ++play.mAttempts;
    play.mBeginNs = mNowNs;
    play.mEndNs = 0;
    play.mOutcome = std::max(play.mOutcome, Outcome::Unfinished);
}

void SummaryBuilder::operator()(const journal::Finding& finding)
{
    if (finding.mPlay) {
        playAt(*finding.mPlay).mListedFindings.push_back(finding);
    } else {
        mSummary.mOutside.push_back(finding);
    }
}

void SummaryBuilder::operator()(const journal::PlayEnd& end)
{
    PlaySummary& play = playAt(end.mPlay);
    const Outcome outcome = outcomeOf(end.mVerdict, mSummary.mNight.mIsObserved);
    play.mOutcome = play.mOutcome == Outcome::Failed ? Outcome::Failed : outcome;
    play.mEndNs = mNowNs;
    play.mFirstStampNs = end.mFirstStampNs;
    play.mLastStampNs = end.mLastStampNs;
    play.mSamples = end.mSamples;
    play.mDelayNs = end.mDelayNs;
    play.mFindings = end.mFindings;
}

void SummaryBuilder::operator()(const journal::ProgramEnded& end)
{
    if (!end.mEndText.empty()) {
        mSummary.mDeaths.push_back(end);
    }
}

void SummaryBuilder::operator()(const journal::NightEnd& end)
{
    mSummary.mState = stateOf(end.mReason);
    mSummary.mReason = end.mText;
}

/** With --until-failure there may be more plays than in the plan. */
PlaySummary& SummaryBuilder::playAt(int index)
{
    const auto play = static_cast<size_t>(index);
    if (index < 0 || play >= mSummary.mNight.mOrder.size() + mEntries) {
        throw base::CaseError(
            fmt::format("play {}: expected a number below {}", index, mSummary.mPlays.size()));
    }
    while (mSummary.mPlays.size() <= play) {
        addPlay();
    }
    return mSummary.mPlays[play];
}

void SummaryBuilder::addPlay()
{
    const std::vector<int>& order = mSummary.mNight.mOrder;
    const size_t play = mSummary.mPlays.size();
    const int index = order.empty() ? -1 : order[play % order.size()];
    if (index < 0 || static_cast<size_t>(index) >= mSummary.mCases.size()) {
        throw base::CaseError(fmt::format("play {} is of case {}: expected a number below {}", play,
                                          index, mSummary.mCases.size()));
    }
    CaseSummary& played = mSummary.mCases[static_cast<size_t>(index)];
    played.mPlays.push_back(play);
    PlaySummary& added = mSummary.mPlays.emplace_back();
    added.mCase = static_cast<size_t>(index);
    added.mRepetition = static_cast<int>(played.mPlays.size());
}

void SummaryBuilder::finishPlay(PlaySummary* play)
{
    play->mFindings = std::max<quint64>(play->mFindings, play->mListedFindings.size());
    if (play->mFindings > 0) {
        play->mOutcome = Outcome::Failed;
    }
    mSummary.mCounts.add(play->mOutcome);
    mSummary.mFindings += play->mFindings;
    mSummary.mSamples += play->mSamples;
}

void SummaryBuilder::finishCases()
{
    std::vector<qint64> all;
    for (CaseSummary& it : mSummary.mCases) {
        it.mOutcome = it.mPlays.empty() ? Outcome::NotPlayed : Outcome::Passed;
        std::vector<qint64> delays;
        for (const size_t index : it.mPlays) {
            const PlaySummary& play = mSummary.mPlays[index];
            it.mCounts.add(play.mOutcome);
            it.mOutcome = std::max(it.mOutcome, play.mOutcome);
            it.mFindings += play.mFindings;
            if (play.mDelayNs) {
                delays.push_back(*play.mDelayNs);
            }
        }
        all.insert(all.end(), delays.begin(), delays.end());
        it.mDelays = spreadOf(std::move(delays));
    }
    mSummary.mDelays = spreadOf(std::move(all));
}

NightSummary SummaryBuilder::finish()
{
    // After the first failure no more plays were wanted.
    if (mSummary.mState == NightState::FirstFailure) {
        while (!mSummary.mPlays.empty() && mSummary.mPlays.back().mAttempts == 0) {
            mSummary.mCases[mSummary.mPlays.back().mCase].mPlays.pop_back();
            mSummary.mPlays.pop_back();
        }
    }
    mSummary.mFindings = mSummary.mOutside.size();
    for (PlaySummary& play : mSummary.mPlays) {
        finishPlay(&play);
    }
    finishCases();
    return std::move(mSummary);
}
} // namespace

const char* nameOf(Outcome outcome)
{
    static constexpr std::array<const char*, static_cast<size_t>(Outcome::Count)> kNames = {
        "passed", "not observed", "not played", "not finished", "failed"};
    return kNames.at(static_cast<size_t>(outcome));
}

size_t OutcomeCounts::ended() const
{
    return of(Outcome::Passed) + of(Outcome::NotObserved) + of(Outcome::Failed);
}

size_t CaseAssessment::bad() const
{
    return static_cast<size_t>(std::count_if(
        mValues.begin(), mValues.end(), [](const auto& it) { return it.mGrade == Grade::Bad; }));
}

size_t NightSummary::assessedCases() const
{
    return static_cast<size_t>(std::count_if(
        mCases.begin(), mCases.end(), [](const auto& it) { return it.mAssessment.isThere(); }));
}

size_t NightSummary::badAssessments() const
{
    size_t count = 0;
    for (const CaseSummary& it : mCases) {
        count += it.mAssessment.bad();
    }
    return count;
}

bool NightSummary::isGood() const
{
    return mState == NightState::Done && !mPlays.empty() && mOutside.empty() &&
           mCounts.of(wanted()) == mPlays.size() && badAssessments() == 0 &&
           mAssessmentProblem.empty();
}

NightSummary summarize(const std::vector<journal::Entry>& entries)
{
    SummaryBuilder builder(entries.size());
    for (const journal::Entry& entry : entries) {
        builder.add(entry);
    }
    return builder.finish();
}

int statusOf(const NightSummary& night)
{
    if (night.mState == NightState::Interrupted) {
        return kStatusInterrupted;
    }
    return night.isGood() ? 0 : kStatusBad;
}

} // namespace report
