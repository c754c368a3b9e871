#include "plot/Periods.h"

#include <cmath>
#include <utility>

#include "SampleRecord.h"

namespace plot {

namespace {
constexpr double kUsualHertz = 50.0;

void clear(Period* period)
{
    period->mSeconds.clear();
    period->mPhases.clear();
    for (std::vector<double>& values : period->mValues) {
        values.clear();
    }
}
} // namespace

Periods::Periods(const waveform::SignalDescription& description, size_t curves, Take take)
    : mIsOfDevice(isOfDevice(description)),
      mHertz(description.mNominalHz > 0.0 ? description.mNominalHz : kUsualHertz),
      mTake(std::move(take))
{
    mLast.mValues.resize(curves);
    mPeriod.mValues.resize(curves);
}

double Periods::turnsAt(size_t sample, double seconds) const
{
    return mIsOfDevice ? static_cast<double>(sample) / kSamplesPerPeriod : seconds * mHertz;
}

void Periods::add(const waveform::SignalBlock& block)
{
    size_t first = 0;
    while (first < block.size()) {
        const double number = std::floor(turnsAt(block.mFirst + first, block.mSeconds[first]));
        if (number != mNumber || mPeriod.size() >= kMaxSamples) {
            close(block.mSeconds[first], number == mNumber + 1.0);
            mNumber = number;
        }
        size_t last = first + 1;
        while (last < block.size() &&
               turnsAt(block.mFirst + last, block.mSeconds[last]) < mNumber + 1.0) {
            ++last;
        }
        append(block, first, last);
        first = last;
    }
}

void Periods::append(const waveform::SignalBlock& block, size_t begin, size_t end)
{
    for (size_t i = begin; i < end; ++i) {
        mPeriod.mSeconds.push_back(block.mSeconds[i]);
        // From the beginning of the period, so that equal periods have equal phases.
        mPeriod.mPhases.push_back(
            mIsOfDevice ? static_cast<double>(mPeriod.mPhases.size()) / kSamplesPerPeriod
                        : turnsAt(block.mFirst + i, block.mSeconds[i]) - mNumber);
    }
    for (size_t curve = 0; curve < block.mValues.size(); ++curve) {
        const double* const values = block.mValues[curve].data();
        mPeriod.mValues[curve].insert(mPeriod.mValues[curve].end(), values + begin, values + end);
    }
}

void Periods::close(double end, bool isNextAdjacent)
{
    if (mPeriod.size() > 0) {
        mPeriod.mBegin = mPeriod.mSeconds.front();
        mPeriod.mEnd = mIsOfDevice ? end : mPeriod.mBegin + 1.0 / mHertz;
        mTake(mLast, mPeriod);
        mAnyTaken = true;
    }
    std::swap(mLast, mPeriod);
    clear(&mPeriod);
    if (!isNextAdjacent) {
        clear(&mLast);
    }
}

void Periods::finish()
{
    const bool isWhole = mPeriod.size() + 1 >= mLast.size() && mLast.size() > 0;
    if (mPeriod.size() > 0 && (isWhole || !mAnyTaken)) {
        close(isWhole
                  ? mPeriod.mSeconds.back() + mLast.length() - mLast.mSeconds.back() + mLast.mBegin
                  : mPeriod.mSeconds.back(),
              false);
    }
}

} // namespace plot
