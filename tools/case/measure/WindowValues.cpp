#include "measure/WindowValues.h"

namespace measure {

namespace {
/** Calls the operation for each number and the one of the other values that belongs to it. */
template <typename Operation>
void forEachNumber(WindowValues& values, const WindowValues& others, const Operation& operation)
{
    for (size_t channel = 0; channel < values.mChannels.size(); ++channel) {
        ChannelSquares& own = values.mChannels[channel];
        const ChannelSquares& other = others.mChannels[channel];
        operation(own.mRms, other.mRms);
        for (size_t order = 0; order < own.mHarmonics.size(); ++order) {
            operation(own.mHarmonics[order], other.mHarmonics[order]);
        }
        for (size_t order = 0; order < own.mInterharmonics.size(); ++order) {
            operation(own.mInterharmonics[order], other.mInterharmonics[order]);
        }
    }
    for (size_t system = 0; system < values.mSequences.size(); ++system) {
        operation(values.mSequences[system].mPositive, others.mSequences[system].mPositive);
        operation(values.mSequences[system].mNegative, others.mSequences[system].mNegative);
        operation(values.mSequences[system].mZero, others.mSequences[system].mZero);
    }
    for (size_t phase = 0; phase < values.mPower.size(); ++phase) {
        operation(values.mPower[phase].mActive, others.mPower[phase].mActive);
        operation(values.mPower[phase].mReactive, others.mPower[phase].mReactive);
        operation(values.mPower[phase].mApparent, others.mPower[phase].mApparent);
    }
}
} // namespace

void WindowValues::add(const WindowValues& other)
{
    forEachNumber(*this, other, [](double& own, double more) { own += more; });
}

void WindowValues::divideBy(double count)
{
    forEachNumber(*this, *this, [count](double& own, double) { own /= count; });
}

} // namespace measure
