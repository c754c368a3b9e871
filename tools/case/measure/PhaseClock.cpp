#include "measure/PhaseClock.h"

#include <algorithm>
#include <cmath>

#include "SampleRecord.h"

namespace measure {

namespace {
constexpr double kLineCycles = 1.0 / kSamplesPerPeriod; ///< if in step with the fundamental
constexpr double kHalfCycle = 0.5;

/**
 * Max difference of a turn from the turn before it. A phase modulation by 0.1 rad at 5 Hz needs
 * 0.57 degrees.
 */
constexpr double kMaxTurnChangeCycles = 1.0 / 360.0;

/** Max difference of the growth of the amplitude. A modulation by 10 % at 5 Hz needs 1 %. */
constexpr double kMaxGrowthChange = 0.015;

/** A fall of the amplitude below this part of the one before is a fault. */
constexpr double kMinAmplitude = 0.5;

/** With a smaller share of its power in the fundamental, a system counts as having none. */
constexpr double kMinShare = 0.25;

/**
 * Number of even measurements in a row that are trusted: the windows of the last two are free of
 * the fault.
 */
constexpr size_t kTrustedRun = 6;

/** Number of points that are withdrawn when a fault is found: their windows held its beginning. */
constexpr size_t kWithdrawn = 3;

/** Number of points before those that give the frequency before the fault. */
constexpr size_t kFrequencyHops = 4;

/** Max wait for the first fundamental, in hops. */
constexpr size_t kMaxWait = 50;

/** Index of a line with room for the longest window before it. */
constexpr size_t kMaxWindow = size_t{3} * kSamplesPerPeriod;

/** Range of the turn per half period, in cycles: 20 to 85 Hz for lines of 50 Hz. */
constexpr double kMinTurn = 0.2;
constexpr double kMaxTurn = 0.85;

/**
 * Max difference of turns at which the fundamental is in step with the lines: 1e-5 of a period,
 * which is 5 ppm of rms.
 */
constexpr double kLineTurn = 0.5e-5;

/** Drift in cycles against the lines, within 10 and 100 periods, at which it is out of step. */
constexpr size_t kShortDriftHops = 20;
constexpr double kShortDrift = 4e-4;
constexpr size_t kLongDriftHops = 200;
constexpr double kLongDrift = 1e-3;

/** Number of drifting hops in a row: more than the hops whose windows hold one fault. */
constexpr size_t kDriftingHops = 6;

double wrappedCycles(double cycles)
{
    return cycles - std::round(cycles);
}
} // namespace

PhaseClock::PhaseClock() : mTurn(kHalfCycle) {}

void PhaseClock::add(const waveform::SignalBlock& block)
{
    mSamples.append(block);
    while (mSamples.end() > (mNextHop + 1) * kHopLines &&
           mSamples.covers(std::max(mNextHop * kHopLines, kMaxWindow), windowFrequency())) {
        measureHop();
    }
    constexpr size_t kKept = size_t{8} * kSamplesPerPeriod;
    mSamples.dropBefore(std::max(mNextHop * kHopLines, kKept) - kKept);
}

void PhaseClock::measureHop()
{
    const size_t middle = mNextHop * kHopLines;
    if (!mSamples.covers(middle, windowFrequency())) { // at the beginning
        pushExtrapolated();
    } else {
        const auto phasor = mSamples.measure(mReference, middle, windowFrequency());
        if (!mIsFollowing || !followOn(phasor)) {
            searchFundamental(phasor);
        }
    }
    ++mNextHop;
}

/** The frequency of the last turn; exactly that of the lines if they are almost equal. */
double PhaseClock::windowFrequency() const
{
    const double turn = !mIsFollowing && mRun.size() > 1
                            ? mRun.back().mCycles - mRun[mRun.size() - 2].mCycles
                            : mTurn + mTurnChange;
    constexpr double kSame = 1e-4;
    return std::abs(turn - kHalfCycle) < kSame
               ? kLineCycles
               : std::clamp(turn, kMinTurn, kMaxTurn) / static_cast<double>(kHopLines);
}

/** @return false if a fault begins here */
bool PhaseClock::followOn(const SequenceSamples::Phasor& phasor)
{
    const double expected = mCycles + mTurn + mTurnChange;
    const double difference = wrappedCycles(phasor.mCycles - expected);
    const double growth = phasor.mAmplitude - mAmplitude;
    const bool isEven = std::abs(difference) <= kMaxTurnChangeCycles &&
                        std::abs(growth - mGrowth) <= kMaxGrowthChange * mAmplitude;
    if (!isEven || phasor.mAmplitude < kMinAmplitude * mAmplitude) {
        beginFault();
        return false;
    }
    const double turn = mTurn + mTurnChange + difference;
    mTurnChange = turn - mTurn;
    mTurn = turn;
    mCycles += turn;
    mAmplitude = phasor.mAmplitude;
    mGrowth = growth;
    pushMeasured(turn);
    return true;
}

void PhaseClock::pushMeasured(double turn)
{
    ClockPoint point{0.0, turn, true, mIsOnLines, false};
    if (mIsOnLines && isLeavingLines()) {
        mIsOnLines = point.mIsOnLines = false;
    }
    point.mCycles = mPoints.back().mCycles + (mIsOnLines ? kHalfCycle : turn);
    mPoints.push_back(point);
}

bool PhaseClock::isLeavingLines()
{
    mDrift.push_back(mCycles - static_cast<double>(mNextHop) * kHalfCycle);
    const auto driftOver = [this](size_t hops) {
        return mDrift.size() > hops ? std::abs(mDrift.back() - mDrift[mDrift.size() - 1 - hops])
                                    : 0.0;
    };
    const bool isDrifting =
        driftOver(kShortDriftHops) > kShortDrift || driftOver(kLongDriftHops) > kLongDrift;
    mDrifting = isDrifting ? mDrifting + 1 : 0;
    if (mDrift.size() > kLongDriftHops) {
        mDrift.pop_front();
    }
    return mDrifting > kDriftingHops;
}

void PhaseClock::pushExtrapolated()
{
    const double turn = mIsOnLines ? kHalfCycle : mTurn;
    const double cycles = mPoints.empty() ? 0.0 : mPoints.back().mCycles + turn;
    mPoints.push_back({cycles, turn, false, mIsOnLines, false});
}

/** Withdraws the points whose windows held the beginning of the fault. */
void PhaseClock::beginFault()
{
    mIsFollowing = false;
    mRun.clear();
    mTurnChange = 0.0;
    const size_t count = std::min(kWithdrawn, mPoints.size() - mTaken);
    const size_t last = mPoints.size() - 1 - count;
    if (!mIsOnLines && last >= kFrequencyHops) {
        mTurn = (mPoints[last].mCycles - mPoints[last - kFrequencyHops].mCycles) / kFrequencyHops;
    }
    mPoints.resize(last + 1);
    for (size_t i = 0; i < count; ++i) {
        pushExtrapolated();
    }
}

/** Chooses another system when this one has no fundamental. */
bool PhaseClock::chooseReference()
{
    const auto* const found = std::find_if(
        kPhaseReferences.begin(), kPhaseReferences.end(), [this](PhaseReference reference) {
            const size_t middle = mNextHop * kHopLines;
            return mSamples.measure(reference, middle, windowFrequency()).mShare >= kMinShare;
        });
    if (found == kPhaseReferences.end()) {
        return false;
    }
    mReference = *found;
    return true;
}

void PhaseClock::searchFundamental(SequenceSamples::Phasor phasor)
{
    if (phasor.mShare < kMinShare) {
        mRun.clear();
        if (chooseReference()) {
            phasor = mSamples.measure(mReference, mNextHop * kHopLines, windowFrequency());
        }
    }
    if (phasor.mShare >= kMinShare) {
        extendRun(phasor);
    }
    pushExtrapolated();
    if (mRun.size() >= kTrustedRun) {
        resume();
    }
}

void PhaseClock::extendRun(const SequenceSamples::Phasor& phasor)
{
    const double expectedTurn =
        mRun.size() > 1 ? mRun.back().mCycles - mRun[mRun.size() - 2].mCycles : mTurn;
    if (mRun.empty()) {
        mRun.push_back({mNextHop, phasor.mCycles, phasor.mAmplitude});
        return;
    }
    const HopMeasurement& last = mRun.back();
    const double difference = wrappedCycles(phasor.mCycles - last.mCycles - expectedTurn);
    const double ratio = phasor.mAmplitude / last.mAmplitude;
    const bool isEven = mRun.size() < 2 || std::abs(difference) <= kMaxTurnChangeCycles;
    const double turn = expectedTurn + difference;
    if (!isEven || ratio < kMinAmplitude || ratio * kMinAmplitude > 1.0 || turn < kMinTurn ||
        turn > kMaxTurn) {
        mRun.clear();
        mRun.push_back({mNextHop, phasor.mCycles, phasor.mAmplitude});
        return;
    }
    mRun.push_back({mNextHop, last.mCycles + turn, phasor.mAmplitude});
}

/**
 * Decides by the last two points, whose windows are free of the fault. The window has the length
 * for the lines: any other length gives an unbalanced system an image.
 */
bool PhaseClock::isRunOnLines()
{
    const size_t middle = mRun.back().mHop * kHopLines;
    if (!mSamples.covers(middle, kLineCycles) ||
        !mSamples.covers(middle - kHopLines, kLineCycles)) {
        return false;
    }
    const double before = mSamples.measure(mReference, middle - kHopLines, kLineCycles).mCycles;
    const double turn = mSamples.measure(mReference, middle, kLineCycles).mCycles - before;
    return std::abs(wrappedCycles(turn - kHalfCycle)) < kLineTurn;
}

/** Trusts the run from now on. */
void PhaseClock::resume()
{
    refineRun();
    const HopMeasurement& last = mRun.back();
    mIsOnLines = mIsOnLines && isRunOnLines();
    if (!mHasBegun) {
        begin();
    }
    mIsFollowing = true;
    mHasBegun = true;
    mTurn = last.mCycles - mRun[mRun.size() - 2].mCycles;
    mTurnChange = 0.0;
    mCycles = last.mCycles;
    mAmplitude = last.mAmplitude;
    mGrowth = last.mAmplitude - mRun[mRun.size() - 2].mAmplitude;
    mDrift.clear();
    mDrifting = 0;
}

/**
 * Measures the run again, with its mean frequency and then with the frequency around each point.
 * Drops points at the beginning that a wider window cannot reach.
 */
void PhaseClock::refineRun()
{
    const double mean = (mRun.back().mCycles - mRun.front().mCycles) /
                        static_cast<double>((mRun.size() - 1) * kHopLines);
    while (mRun.size() > 2 && !mSamples.covers(mRun.front().mHop * kHopLines, mean)) {
        mRun.erase(mRun.begin());
    }
    const size_t last = mRun.size() - 1;
    for (size_t i = 0; i <= last; ++i) {
        refine(i, mRun[0], mRun[last]);
    }
    for (size_t i = 0; i <= last; ++i) {
        refine(i, mRun[std::max<size_t>(i, 1) - 1], mRun[std::min(i + 1, last)]);
    }
}

/** Measures a point again with the frequency between two others. */
void PhaseClock::refine(size_t index, const HopMeasurement& before, const HopMeasurement& after)
{
    const double frequency = (after.mCycles - before.mCycles) /
                             static_cast<double>((after.mHop - before.mHop) * kHopLines);
    HopMeasurement& measurement = mRun[index];
    if (mSamples.covers(measurement.mHop * kHopLines, frequency)) {
        const auto phasor = mSamples.measure(mReference, measurement.mHop * kHopLines, frequency);
        measurement.mCycles += wrappedCycles(phasor.mCycles - measurement.mCycles);
    }
}

/** Gives the points before the fundamental was found its first frequency. */
void PhaseClock::begin()
{
    const double firstTurn = mRun[1].mCycles - mRun[0].mCycles;
    for (size_t i = mTaken; i < mPoints.size(); ++i) {
        ClockPoint& point = mPoints[i];
        const size_t hop = mNextHop + 1 + i - mPoints.size();
        point.mIsOnLines = mIsOnLines;
        point.mIsMeasured = hop > mRun[0].mHop;
        point.mTurn = point.mIsMeasured
                          ? mRun[hop - mRun[0].mHop].mCycles - mRun[hop - mRun[0].mHop - 1].mCycles
                          : firstTurn;
        const double clockTurn = mIsOnLines ? kHalfCycle : point.mTurn;
        point.mCycles = i == 0 ? 0.0 : mPoints[i - 1].mCycles + clockTurn;
    }
}

void PhaseClock::finish()
{
    mIsFinished = true;
    while (mNextHop * kHopLines < mSamples.end() + 2 * kHopLines) {
        pushExtrapolated();
        mPoints.back().mIsBeyond = mIsFollowing;
        ++mNextHop;
    }
}

std::optional<ClockPoint> PhaseClock::take()
{
    const bool isSettled = mHasBegun || mPoints.size() > kMaxWait || mIsFinished;
    const size_t held = mIsFinished ? 0 : kWithdrawn + 1;
    if (!isSettled || mPoints.size() - mTaken <= held) {
        return std::nullopt;
    }
    const ClockPoint point = mPoints[mTaken];
    ++mTaken;
    if (mTaken > kFrequencyHops + 1) {
        mPoints.pop_front();
        --mTaken;
    }
    return point;
}

} // namespace measure
