#include "measure/PeriodGrid.h"

#include <algorithm>
#include <cmath>

#include "base/Sums.h"

namespace measure {

namespace {
constexpr double kGridCycles = 1.0 / kSamplesPerPeriod; ///< from one sample to the next

std::array<const double*, kChannelCount> columnsOf(const SampleHistory& samples, size_t index)
{
    std::array<const double*, kChannelCount> columns{};
    for (size_t channel = 0; channel < columns.size(); ++channel) {
        columns[channel] = samples.valuesFrom(channel, index);
    }
    return columns;
}
} // namespace

double PeriodGrid::Arc::cyclesAt(double x) const
{
    const double rise = mEnd - mBegin;
    const double bend = mBeginSlope - rise;
    const double twist = mEndSlope - rise;
    // A straight line plus a cubic that is 0 at both ends.
    return mBegin + x * rise + x * (1.0 - x) * (bend * (1.0 - x) - twist * x);
}

double PeriodGrid::Arc::slopeAt(double x) const
{
    const double rise = mEnd - mBegin;
    const double bend = mBeginSlope - rise;
    const double twist = mEndSlope - rise;
    return rise + bend * (1.0 - x) * (1.0 - 3.0 * x) - twist * x * (2.0 - 3.0 * x);
}

void PeriodGrid::add(const waveform::SignalBlock& lines)
{
    std::array<const double*, kChannelCount> columns{};
    for (size_t channel = 0; channel < columns.size(); ++channel) {
        columns[channel] = lines.mValues[channel].data();
    }
    mLines.append(lines.mSeconds.data(), columns, lines.size());
    mClock.add(lines);
    pull();
}

void PeriodGrid::finish()
{
    mIsFinished = true;
    mClock.finish();
    pull();
}

std::vector<ClockPeriod> PeriodGrid::takePeriods()
{
    std::vector<ClockPeriod> periods;
    periods.swap(mPeriods);
    return periods;
}

void PeriodGrid::pull()
{
    while (const auto point = mClock.take()) {
        if (mPoints.empty()) { // an extra point before the first, for its slope
            ClockPoint before = *point;
            before.mCycles -= before.mTurn;
            mPoints.push_back(before);
        }
        mPoints.push_back(*point);
        if (mPoints.size() == 4) {
            makeInterval();
            mPoints.erase(mPoints.begin());
            ++mInterval;
        }
    }
    const size_t reached = mInterval * kHopLines;
    mLines.dropBefore(std::max(reached, mKernel.halfWidth()) - mKernel.halfWidth());
}

double PeriodGrid::nextCycles() const
{
    return mFirstCycles + static_cast<double>(mGrid.end()) * kGridCycles;
}

void PeriodGrid::makeInterval()
{
    const size_t first = mInterval * kHopLines;
    const ClockPoint& end = mPoints[2];
    // To resample between lines, the phase must be known.
    const bool isUnknown = !end.mIsOnLines && (end.mIsBeyond || !(mHasStarted || end.mIsMeasured));
    if (first >= mLines.end() || isUnknown) {
        return;
    }
    const Arc arc{mPoints[1].mCycles, end.mCycles, (end.mCycles - mPoints[0].mCycles) / 2.0,
                  (mPoints[3].mCycles - mPoints[1].mCycles) / 2.0};
    const size_t firstSample = mGrid.end();
    if (end.mIsOnLines) {
        copyLines(first);
    } else {
        resample(first, arc);
    }
    addToPeriods(firstSample, arc, end);
}

void PeriodGrid::copyLines(size_t first)
{
    mHasStarted = true;
    mGrid.append(mLines.secondsFrom(first), columnsOf(mLines, first),
                 std::min(kHopLines, mLines.end() - first));
}

/** Makes no samples where the kernel would reach beyond the lines. */
void PeriodGrid::resample(size_t first, const Arc& arc)
{
    const auto reach = static_cast<double>(mKernel.halfWidth());
    const auto begin = static_cast<double>(first);
    if (!mHasStarted) {
        const double x = std::max(reach - begin, 0.0) / kHopLines;
        if (x >= 1.0) {
            return;
        }
        mFirstCycles = std::ceil(arc.cyclesAt(x) / kGridCycles) * kGridCycles;
        mHasStarted = true;
    }
    while (nextCycles() < arc.mEnd) {
        const double cycles = nextCycles();
        double x = (cycles - arc.mBegin) / (arc.mEnd - arc.mBegin);
        for (int i = 0; i < 2; ++i) {
            x -= (arc.cyclesAt(x) - cycles) / arc.slopeAt(x);
        }
        const double line = begin + x * kHopLines;
        if (line + reach + 1.0 >= static_cast<double>(mLines.end())) {
            return;
        }
        addSample(line);
    }
}

void PeriodGrid::addSample(double line)
{
    const auto before = static_cast<size_t>(line);
    mKernel.weightsAt(line - static_cast<double>(before), mWeights);
    std::array<double, kChannelCount> values{};
    for (size_t channel = 0; channel < values.size(); ++channel) {
        values[channel] =
            base::dotProduct(mLines.valuesFrom(channel, before + 1 - mKernel.halfWidth()),
                             mWeights.data(), 2 * mKernel.halfWidth());
    }
    mGrid.append(mLines.secondsAt(line), values);
}

/** Ends a period at each 360th sample, with the measured turn of the fundamental. */
void PeriodGrid::addToPeriods(size_t firstSample, const Arc& arc, const ClockPoint& end)
{
    const double turnPerCycle = end.mTurn / (arc.mEnd - arc.mBegin);
    double from = std::max(arc.mBegin, mFirstCycles);
    const auto extend = [&](double to) {
        mPeriod.mCycles += (to - from) * turnPerCycle;
        mPeriod.mIsMeasured = mPeriod.mIsMeasured && (end.mIsMeasured || to <= from);
        from = to;
    };
    size_t index = (firstSample + kSamplesPerPeriod - 1) / kSamplesPerPeriod * kSamplesPerPeriod;
    for (; index < mGrid.end(); index += kSamplesPerPeriod) {
        extend(mFirstCycles + static_cast<double>(index) * kGridCycles);
        mPeriod.mEnd = mGrid.secondsOf(index);
        if (mHasPeriod) {
            mPeriods.push_back(mPeriod);
        }
        mPeriod = {mPeriod.mEnd, 0.0, 0.0, true};
        mHasPeriod = true;
    }
    extend(arc.mEnd);
}

} // namespace measure
