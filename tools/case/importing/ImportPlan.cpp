#include "importing/ImportPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "SampleStep.h"
#include "base/CaseError.h"
#include "base/Numbers.h"
#include "importing/Fundamental.h"
#include "importing/TimeCheck.h"

namespace importing {

namespace {
/** 55 h at 50 Hz. A longer recording must have wrong time stamps or a wrong rate. */
constexpr double kMaxPeriods = 1e7;

void limitRange(ImportPlan& plan, const waveform::SignalDescription& description,
                const resampling::SampleTimes& times, const ImportOptions& options)
{
    plan.mFrom = options.mFrom.value_or(times.begin());
    plan.mTo = options.mTo.value_or(times.end());
    const bool isInside = plan.mFrom >= times.begin() && plan.mFrom < plan.mTo &&
                          plan.mTo <= times.end() + kRoundingOfSeconds;
    if (!isInside) {
        throw base::CaseError(
            fmt::format("{}: from {:g} s to {:g} s: expected a part of {:g} to {:g} s",
                        description.mFileName, plan.mFrom, plan.mTo, times.begin(), times.end()));
    }
}

void remarkTrack(ImportPlan& plan)
{
    const auto [lowest, highest] =
        std::minmax_element(plan.mSchedule.mPeriods.begin(), plan.mSchedule.mPeriods.end(),
                            [](const auto& a, const auto& b) { return a.mHz < b.mHz; });
    plan.mRemarks.push_back(
        fmt::format("the frequency is followed: {:.3f} to {:.3f} Hz", lowest->mHz, highest->mHz));
    constexpr size_t kMaxGaps = 10;
    const std::vector<resampling::PhaseTrack::Gap>& gaps = plan.mTrack->gaps();
    for (size_t i = 0; i < std::min(gaps.size(), kMaxGaps); ++i) {
        plan.mRemarks.push_back(
            fmt::format("it cannot be measured from {:.3f} to {:.3f} s: extrapolated",
                        gaps[i].first, gaps[i].second));
    }
    if (gaps.size() > kMaxGaps) {
        plan.mRemarks.push_back(fmt::format("and in {} more such spans", gaps.size() - kMaxGaps));
    }
}

void schedule(ImportPlan& plan, const std::string& reasonNotTracked, const ImportOptions& options)
{
    if (options.mTiming == LineTiming::Phase && plan.mTrack) {
        plan.mSchedule = resampling::scheduleKeepingPhase(*plan.mTrack, plan.mFrom, plan.mTo);
        remarkTrack(plan);
        return;
    }
    const auto nominal = static_cast<float>(plan.mNominalHz);
    const float hz = options.mTiming == LineTiming::Fixed ? options.mHz : nominal;
    plan.mSchedule = resampling::scheduleKeepingTime(hz, plan.mFrom, plan.mTo);
    if (options.mTiming == LineTiming::Phase) {
        plan.mRemarks.push_back(fmt::format("{}: {:g} Hz is played", reasonNotTracked, hz));
    }
}
} // namespace

double ImportPlan::cyclesAt(double seconds) const
{
    return mTrack ? mTrack->cyclesAt(seconds) - mTrack->cyclesAt(mFrom)
                  : (seconds - mFrom) * mNominalHz;
}

double ImportPlan::periodFrom(double seconds) const
{
    return mTrack ? mTrack->secondsAt(mTrack->cyclesAt(seconds) + 1.0) - seconds : 1.0 / mNominalHz;
}

double ImportPlan::periodBefore(double seconds) const
{
    return mTrack ? seconds - mTrack->secondsAt(mTrack->cyclesAt(seconds) - 1.0) : 1.0 / mNominalHz;
}

double ImportPlan::linesPerSecond() const
{
    const auto slowest =
        std::max_element(mSchedule.mPeriods.begin(), mSchedule.mPeriods.end(),
                         [](const auto& a, const auto& b) { return a.mStep < b.mStep; });
    return 1.0 / slowest->mStep;
}

size_t ImportPlan::linesOf(size_t periods) const
{
    return static_cast<size_t>(std::llround(static_cast<double>(periods) * mLinesPerPeriod));
}

double ImportPlan::beginBefore(size_t periods) const
{
    const quint32 stepNs = sampleStepOf(mSchedule.mPeriods.front().mHz);
    return mSchedule.secondsOf(0) -
           static_cast<double>(linesOf(periods)) * stepNs * base::kSecondsPerNanosecond;
}

ImportPlan planImport(const waveform::SignalDescription& description,
                      const RecordedSignal& recorded, const resampling::SampleTimes& times,
                      const ChannelMap& map, const ImportOptions& options)
{
    ImportPlan plan;
    limitRange(plan, description, times, options);
    const double nominal = isNominalKnown(description) ? description.mNominalHz : 0.0;
    const double highest = std::max({100.0, nominal, double(options.mHz)});
    if ((times.end() - times.begin()) * highest > kMaxPeriods) {
        throw base::CaseError(fmt::format("{}: lasts {:g} s: expected {:g} s at most",
                                          description.mFileName, times.end() - times.begin(),
                                          kMaxPeriods / highest));
    }
    Fundamental fundamental = findFundamental(description, recorded, times, map);
    plan.mNominalHz = fundamental.mNominalHz;
    plan.mTrack = std::move(fundamental.mTrack);
    plan.mRemarks = std::move(fundamental.mRemarks);
    const auto remarks =
        checkTimes(description, recorded.mSeconds, times, {plan.mFrom, plan.mTo}, plan.mNominalHz);
    plan.mRemarks.insert(plan.mRemarks.end(), remarks.begin(), remarks.end());
    schedule(plan, fundamental.mReasonNotTracked, options);
    plan.mFirstPeriod = plan.periodFrom(plan.mFrom);
    plan.mLastPeriod = plan.periodBefore(plan.mTo);
    plan.mLinesPerPeriod = plan.mFirstPeriod / plan.mSchedule.mPeriods.front().mStep;
    const bool doKeepPhase = options.mTiming == LineTiming::Phase && plan.mTrack;
    plan.mLinesPerLastPeriod =
        doKeepPhase ? kSamplesPerPeriod : plan.mLastPeriod / plan.mSchedule.mPeriods.back().mStep;
    return plan;
}

} // namespace importing
