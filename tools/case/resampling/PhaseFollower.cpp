#include "resampling/PhaseFollower.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace resampling {

namespace {
constexpr size_t kHopsPerPeriod = 2;
constexpr size_t kWindowHops = PhaseMeter::kWindowPeriods * kHopsPerPeriod;

/** Max points for an extrapolation: ten periods, a usual interval of power quality measurement. */
constexpr size_t kFitHops = 10 * kHopsPerPeriod;

/** Hops after which a run is trusted: its first and last window have no sample in common ... */
constexpr size_t kSettledHops = kWindowHops + 1;

/** ... and in a deep sag 50 periods: by then protection has cleared any fault. */
constexpr size_t kLongSagHops = 50 * kHopsPerPeriod;

/** Min points to fit a parabola, six periods; fewer points get a line. */
constexpr size_t kPointsForBend = 6 * kHopsPerPeriod;
constexpr size_t kPointsForLine = 3;

/**
 * Max change of the phase step from one measurement to the next: 0.6 degrees in half a period are
 * 17 Hz/s at 50 Hz. No grid is that fast, and a fault turns the phase by more.
 */
constexpr double kMaxStepChange = 0.6 / 360.0;

/** Part of the amplitude before. Below it, the residual voltage follows the fault, not the grid. */
constexpr double kDeepSag = 0.5;

/** Part of the signal's rms. Below it there is only noise. */
constexpr double kSilence = 0.02;

/** Max deviation, as a part of the nominal frequency, that windows of two periods can measure. */
constexpr double kFrequencyRange = 0.25;

/** Max extrapolated change of the frequency, as a part of itself. */
constexpr double kMaxDrift = 0.1;

/** The distance to the nearest whole number of periods, -0.5 to 0.5. */
double wrapped(double cycles)
{
    return cycles - std::round(cycles);
}
} // namespace

PhaseFollower::PhaseFollower(const PhaseMeter& meter, double nominalHz)
    : mMeter(meter),
      mNominalHz(nominalHz),
      mHopSeconds(1.0 / nominalHz / static_cast<double>(kHopsPerPeriod)),
      mFrequency(nominalHz)
{
}

std::optional<PhaseTrack> PhaseFollower::follow()
{
    const double hops = std::ceil((mMeter.end() - mMeter.begin()) / mHopSeconds);
    mCycles.resize(static_cast<size_t>(hops) + kHopsPerPeriod);
    for (size_t hop = 0; hop < mCycles.size(); ++hop) {
        take(hop);
    }
    complete();
    if (!mModel) {
        return {};
    }
    return PhaseTrack(mMeter.begin(), mHopSeconds, std::move(mCycles), std::move(mGaps));
}

double PhaseFollower::secondsOf(size_t hop) const
{
    return mMeter.begin() + static_cast<double>(hop) * mHopSeconds;
}

void PhaseFollower::take(size_t hop)
{
    const auto phasor = mMeter.measure(secondsOf(hop), mFrequency);
    // The lines after the last window of the recording do not end a run.
    const bool isBehindEnd = !phasor && secondsOf(hop) > mMeter.end() - 1.0 / mNominalHz * 2.0;
    if (isBehindEnd) {
        return;
    }
    if (!phasor || phasor->mAmplitude < kSilence * mMeter.rms()) {
        endRun();
        return;
    }
    mHasMeasured = true;
    Point point{hop, phasor->mCycles, phasor->mAmplitude};
    if (!mRun.empty()) {
        const double expected = mRun.back().mCycles + mFrequency * mHopSeconds;
        point.mCycles = expected + wrapped(point.mCycles - expected);
    }
    if (!continuesRun(point)) {
        endRun();
    }
    adopt(point);
}

bool PhaseFollower::continuesRun(const Point& point) const
{
    if (mRun.empty()) {
        return true;
    }
    const Point& last = mRun.back();
    const double step = point.mCycles - last.mCycles;
    const double deviation = step / mHopSeconds / mNominalHz - 1.0;
    if (std::abs(deviation) > kFrequencyRange ||
        isDeepSag(point.mAmplitude) != isDeepSag(last.mAmplitude)) {
        return false;
    }
    return mRun.size() < 2 ||
           std::abs(step - (last.mCycles - mRun[mRun.size() - 2].mCycles)) <= kMaxStepChange;
}

/** Compared with the last amplitude that is known to be undisturbed. */
bool PhaseFollower::isDeepSag(double amplitude) const
{
    return amplitude < kDeepSag * mReference;
}

void PhaseFollower::adopt(const Point& point)
{
    mRun.push_back(point);
    if (mRun.size() > 1) {
        const size_t hops = std::min(mRun.size() - 1, kWindowHops);
        const Point& before = mRun[mRun.size() - 1 - hops];
        mFrequency = (point.mCycles - before.mCycles) / (static_cast<double>(hops) * mHopSeconds);
    }
    if (mIsTrusted) {
        mCycles[point.mHop] = point.mCycles + mOffset;
        mReference = mRun[mRun.size() - std::min(mRun.size(), kWindowHops + 1)].mAmplitude;
    } else if (isSettled()) {
        trustRun();
    }
}

bool PhaseFollower::isSettled() const
{
    const size_t hops = isDeepSag(mRun.back().mAmplitude) ? kLongSagHops : kSettledHops;
    return mRun.size() >= hops + (mIsAfterBreak ? kWindowHops : 0);
}

/** Adds the run to the track, without the phase jump since the run before. */
void PhaseFollower::trustRun()
{
    if (mIsAfterBreak) {
        mRun.erase(mRun.begin(), mRun.begin() + static_cast<std::ptrdiff_t>(kWindowHops));
    }
    const Point& first = mRun.front();
    mOffset = 0.0;
    if (mModel) {
        mOffset = mModel->cyclesAt(first.mHop) - first.mCycles;
        fill(*mModel, mModel->mHop, first.mHop);
        mGaps.emplace_back(secondsOf(mModel->mHop), secondsOf(first.mHop));
    }
    for (const Point& point : mRun) {
        mCycles[point.mHop] = point.mCycles + mOffset;
    }
    mIsTrusted = true;
    mReference = first.mAmplitude;
}

/** Ends the run without its last windows, which may contain the disturbance. */
void PhaseFollower::endRun()
{
    if (mIsTrusted) {
        keep(mRun.size() - std::min(mRun.size(), kWindowHops));
    }
    mRun.clear();
    mIsTrusted = false;
    mIsAfterBreak = mHasMeasured;
    mFrequency = mModel ? mModel->mSlope / mHopSeconds : mNominalHz;
}

/** Ends the trusted run after `count` points. If they are too few, the run is ignored. */
void PhaseFollower::keep(size_t count)
{
    mRun.resize(count);
    if (count < kPointsForLine) {
        if (mModel) {
            mGaps.pop_back(); // the gap before the run has not ended
        }
        return;
    }
    const size_t used = std::min(count, kFitHops);
    if (!mModel) {
        mFirstPoints.assign(mRun.begin(), mRun.begin() + static_cast<std::ptrdiff_t>(used));
    }
    mRun.erase(mRun.begin(), mRun.end() - static_cast<std::ptrdiff_t>(used));
    mModel = fittedTo(mRun, mRun.back().mHop);
    mModel->mCycles += mOffset;
}

void PhaseFollower::fill(const Model& model, size_t from, size_t to)
{
    for (size_t hop = from; hop < to; ++hop) {
        mCycles[hop] = model.cyclesAt(hop);
    }
}

/** Extrapolates before the first run and after the last. */
void PhaseFollower::complete()
{
    if (mIsTrusted) {
        keep(mRun.size());
    }
    if (!mModel) {
        return;
    }
    const size_t last = mModel->mHop;
    fill(*mModel, last + 1, mCycles.size());
    const size_t first = mFirstPoints.front().mHop;
    fill(fittedTo(mFirstPoints, first), 0, first);
    // The centre of a window is at least half a window away from either end.
    const double window = static_cast<double>(kWindowHops) * mHopSeconds;
    if (secondsOf(first) - mMeter.begin() > window) {
        mGaps.emplace(mGaps.begin(), mMeter.begin(), secondsOf(first));
    }
    if (mMeter.end() - secondsOf(last) > window) {
        mGaps.emplace_back(secondsOf(last), mMeter.end());
    }
}

/** The least-squares polynomial, of degree 2 if there are enough points for it. */
PhaseFollower::Model PhaseFollower::fittedTo(const Points& points, size_t anchor) const
{
    const auto count = static_cast<double>(points.size());
    const double middle = static_cast<double>(points.front().mHop) + (count - 1.0) / 2.0;
    const double meanSquare = (count * count - 1.0) / 12.0;
    double mean = 0.0;
    double slope = 0.0;
    double bend = 0.0;
    double bendSquares = 0.0;
    for (const Point& point : points) {
        const double x = static_cast<double>(point.mHop) - middle;
        const double second = x * x - meanSquare;
        mean += point.mCycles / count;
        slope += x * point.mCycles / (count * meanSquare);
        bend += second * point.mCycles;
        bendSquares += second * second;
    }
    bend = points.size() < kPointsForBend ? 0.0 : bend / bendSquares;
    const double x = static_cast<double>(anchor) - middle;
    return {anchor, mean + slope * x + bend * (x * x - meanSquare), slope + 2.0 * bend * x,
            2.0 * bend};
}

double PhaseFollower::Model::cyclesAt(size_t hop) const
{
    const double x = static_cast<double>(hop) - static_cast<double>(mHop);
    const double reach = mBend == 0.0 ? std::abs(x) : std::abs(kMaxDrift * mSlope / mBend);
    const double bent = std::clamp(x, -reach, reach);
    return mCycles + (mSlope + mBend / 2.0 * bent) * bent + (mSlope + mBend * bent) * (x - bent);
}

} // namespace resampling
