#include "judge/PlayJudge.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "waveform/RecordStamp.h"

namespace judge {

namespace {
using explain::FindingKind;

bool contains(const std::vector<int>& numbers, int number)
{
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}
} // namespace

PlayJudge::PlayJudge(const explain::PlayPlan& plan)
    : mPlan(plan),
      mJudge(plan, {true, true, std::numeric_limits<size_t>::max()}, *this),
      mArrivals(explain::kBlocksAhead * plan.longestBlockNs())
{
}

void PlayJudge::expect(int configuration, quint64 samples)
{
    mExpected = Expected{configuration, samples, mSamples.arrived() + samples};
    mPlayed = Played();
    mHasBegun = false;
}

void PlayJudge::add(const explain::Event& event)
{
    mArrivals.add(event);
    mJudge.add(event);
}

void PlayJudge::add(const SampleRecord* records, size_t count)
{
    if (count == 0) {
        return;
    }
    countReceived(records, count);
    mSamples.add(records, count);
    mOffTimeNs = mArrivals.add(records, count) ? mReceivedNs : mOffTimeNs;
    mJudge.add(records, count);
    closePlay();
    judgeArrivals();
}

/** Judges the blocks that end before the expected play can end; without one, all blocks. */
void PlayJudge::judgeArrivals()
{
    size_t index = mOutcomes.size();
    if (!mExpected) {
        mArrivals.dropRest();
        findOffTime(std::nullopt, &index);
        return;
    }
    const size_t end = std::min(mExpected->mMinEnd, mSamples.arrived());
    if (const std::optional<qint64> stampNs = mSamples.stampNsAt(end - 1)) {
        findOffTime(stampNs, &index);
    }
}

void PlayJudge::countReceived(const SampleRecord* records, size_t count)
{
    const qint64 endNs = waveform::stampNsOf(records[count - 1]);
    const qint64 maxNs = static_cast<qint64>(count) * mPlan.longestBlockNs() / kSamplesPerPeriod;
    mReceivedNs += std::clamp<qint64>(endNs - mLastStampNs.value_or(endNs), 0, maxNs);
    mLastStampNs = endNs;
}

void PlayJudge::finish(size_t restBytes)
{
    mJudge.finish(restBytes, true);
    closePlay();
    size_t index = mOutcomes.size();
    findOffTime(std::nullopt, &index);
}

std::vector<Outcome> PlayJudge::take()
{
    std::vector<Outcome> outcomes;
    outcomes.swap(mOutcomes);
    return outcomes;
}

/** A complete play ends at its last sample. Later findings belong to the next play. */
void PlayJudge::closePlay()
{
    const bool isLost = std::exchange(mIsLost, false);
    if (mPlayedAt) {
        endPlay(Played::Ending::Complete, *mPlayedAt);
    }
    if (isLost) {
        endPlay(Played::Ending::Lost, mOutcomes.size());
    } else if (isBackToSteady()) {
        endPlay(Played::Ending::Incomplete, mOutcomes.size());
    }
}

void PlayJudge::endPlay(Played::Ending ending, size_t index)
{
    mPlayed.mEnding = ending;
    const bool isComplete = ending == Played::Ending::Complete;
    findOffTime(isComplete ? std::optional<qint64>(mPlayed.mLastStampNs) : std::nullopt, &index);
    mIsOffTimeFound = false;
    mOutcomes.insert(mOutcomes.begin() + static_cast<std::ptrdiff_t>(index), mPlayed);
    mPlayed = Played();
    mExpected.reset();
    mPlayedAt.reset();
    mHasBegun = false;
}

/**
 * Inserts an off-time finding at this index of the outcomes, at most one per play, and advances the
 * index.
 */
void PlayJudge::findOffTime(std::optional<qint64> untilStampNs, size_t* index)
{
    const std::optional<OffTimeBlock> block = mArrivals.take(untilStampNs);
    if (!block || std::exchange(mIsOffTimeFound, true)) {
        return;
    }
    mOutcomes.insert(
        mOutcomes.begin() + static_cast<std::ptrdiff_t>((*index)++),
        Finding{kOffTime, block->text(), block->mRecord, 1, block->mLastStampNs, true});
}

/** Whether the steady signal was played again after a part of the case. */
bool PlayJudge::isBackToSteady() const
{
    const std::optional<explain::PlayedSegment>& last = mJudge.playedLast();
    return mHasBegun && mPlayed.mSamples > 0 && last && contains(last->mConfigurations, 0) &&
           !contains(last->mConfigurations, mExpected->mConfiguration);
}

bool PlayJudge::plays(const explain::PlayedSegment& segment, int configuration) const
{
    return std::any_of(segment.mConfigurations.begin(), segment.mConfigurations.end(), [&](int it) {
        return contains(mPlan.equalConfigurations(it), configuration);
    });
}

void PlayJudge::add(const explain::PlayedSegment& segment)
{
    if (mHasBegun && !mPlayedAt && plays(segment, mExpected->mConfiguration)) {
        mPlayed.mFirstStampNs =
            mPlayed.mSamples == 0 ? segment.mFirstStampNs : mPlayed.mFirstStampNs;
        mPlayed.mLastStampNs = segment.mLastStampNs;
        mPlayed.mSamples += segment.mSamples;
        if (mPlayed.mSamples >= mExpected->mSamples && !mIsLost) {
            mPlayedAt = mOutcomes.size();
        }
        return;
    }
    if (!plays(segment, 0)) {
        addFinding({kNotPlanned,
                    fmt::format("{} was played out of turn: {} samples from {} on", segment.mFile,
                                segment.mSamples, explain::stampText(segment.mFirstStampNs)),
                    0, segment.mSamples, segment.mFirstStampNs, false});
        mIsLost = true;
    }
}

void PlayJudge::add(const explain::CommandOutcome& command)
{
    const bool isExpected =
        mExpected && command.mText == 's' + std::to_string(mExpected->mConfiguration);
    if (isExpected && command.mFirstSampleArrivalNs) {
        mHasBegun = true;
        mPlayed.mDelayNs = *command.mFirstSampleArrivalNs - command.mArrivalNs;
    }
}

void PlayJudge::add(const explain::Finding& finding)
{
    const explain::FindingName& name = explain::nameOf(finding.mKind);
    addFinding({name.mKey, finding.mText, finding.mRecord, finding.mCount,
                name.mIsOfRun ? std::nullopt : mSamples.stampNsAt(finding.mRecord), name.mIsOfRun});
    mIsLost = mIsLost || finding.mKind == FindingKind::NotGiven ||
              finding.mKind == FindingKind::NotFollowed;
}

void PlayJudge::add(const explain::Verdict& /*verdict*/) {}

void PlayJudge::addFinding(Finding finding)
{
    if (mPlayedAt && belongsToPlayed(finding)) {
        mOutcomes.insert(mOutcomes.begin() + static_cast<std::ptrdiff_t>((*mPlayedAt)++),
                         std::move(finding));
    } else {
        mOutcomes.emplace_back(std::move(finding));
    }
}

/** Whether something found after the play was complete belongs to the play. */
bool PlayJudge::belongsToPlayed(const Finding& finding) const
{
    const bool isTwice = finding.mKind == explain::nameOf(FindingKind::Twice).mKey;
    return finding.mIsOfRun || (isTwice && finding.mRecord > 0 &&
                                mSamples.stampNsAt(finding.mRecord - 1) == mPlayed.mLastStampNs);
}

} // namespace judge
