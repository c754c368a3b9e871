#include "measure/Demodulator.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace measure {

namespace {
constexpr double kGroupsPerPeriod = 64.0;
constexpr double kMaxStepPeriods = 0.25;

/** Columns of the phases in a block. */
constexpr std::array<size_t, kPhasorCount> kBlockColumns{0, 1, 2, 4, 5, 6};

double cyclesAt(qint64 utcNs, double hz)
{
    const qint64 seconds = utcNs / waveform::kSecondInNs;
    const double whole = std::fmod(hz, 1.0) * static_cast<double>(seconds);
    const double part =
        hz * static_cast<double>(utcNs % waveform::kSecondInNs) * base::kSecondsPerNanosecond;
    return std::fmod(whole + part, 1.0);
}
} // namespace

Demodulator::Demodulator(qint64 beginUtcNs, double nominalHz)
    : mNominalHz(nominalHz), mFirstCycles(cyclesAt(beginUtcNs, nominalHz))
{
}

void Demodulator::add(const waveform::SignalBlock& block)
{
    Sample sample;
    for (size_t i = 0; i < block.size(); ++i) {
        sample.mSeconds = block.mSeconds[i];
        for (size_t phase = 0; phase < kPhasorCount; ++phase) {
            sample.mValues[phase] = block.mValues[kBlockColumns[phase]][i];
        }
        take(sample);
    }
}

void Demodulator::dropBefore(double seconds)
{
    const auto first = std::find_if(mGroups.begin(), mGroups.end(), [seconds](const auto& group) {
        return group.mSeconds >= seconds;
    });
    mGroups.erase(mGroups.begin(), first);
}

void Demodulator::take(const Sample& sample)
{
    if (mHasLast) {
        const double step = sample.mSeconds - mLast.mSeconds;
        if (step * mNominalHz > kMaxStepPeriods) {
            restart();
        } else {
            accumulate(mLast, (mLastStep + step) / 2.0);
            mLastStep = step;
        }
    }
    mLast = sample;
    mHasLast = true;
}

void Demodulator::accumulate(const Sample& sample, double weight)
{
    if (mCount == 0) {
        mOpenFirst = sample.mSeconds;
        const double perPeriod = 1.0 / (kGroupsPerPeriod * mNominalHz * std::max(weight, 1e-9));
        mGroupSize = std::max<size_t>(1, static_cast<size_t>(perPeriod));
    }
    const double cycles = mFirstCycles + mNominalHz * sample.mSeconds;
    const double angle = base::kTwoPi * (cycles - std::floor(cycles));
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double real = weight * cosine;
    const double imaginary = -weight * sine;
    for (size_t phase = 0; phase < kPhasorCount; ++phase) {
        mOpen.mSums[2 * phase] += real * sample.mValues[phase];
        mOpen.mSums[2 * phase + 1] += imaginary * sample.mValues[phase];
    }
    const double delay = sample.mSeconds - mOpenFirst;
    mOpen.mImage += std::complex(real * cosine + imaginary * sine, 2.0 * imaginary * cosine);
    mOpen.mWeight += weight;
    mMoment += weight * delay;
    mSquareMoment += weight * delay * delay;
    if (++mCount >= mGroupSize) {
        finishGroup();
    }
}

void Demodulator::finishGroup()
{
    if (mOpen.mWeight > 0.0) {
        const double mean = mMoment / mOpen.mWeight;
        mOpen.mSeconds = mOpenFirst + mean;
        mOpen.mSpread = mSquareMoment / mOpen.mWeight - mean * mean;
        mGroups.push_back(mOpen);
        if (!mIsCovered) {
            mIsCovered = true;
            mCoveredFrom = mOpen.mSeconds;
        }
    }
    mOpen = {};
    mMoment = 0.0;
    mSquareMoment = 0.0;
    mCount = 0;
}

void Demodulator::restart()
{
    mGroups.clear();
    mOpen = {};
    mMoment = 0.0;
    mSquareMoment = 0.0;
    mCount = 0;
    mLastStep = 0.0;
    mIsCovered = false;
}

} // namespace measure
