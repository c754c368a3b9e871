#include "importing/SteadySignal.h"

#include <cmath>

namespace importing {

namespace {
double fractionOf(double cycles)
{
    return cycles - std::floor(cycles);
}
} // namespace

SteadySignal::SteadySignal(MappedSignal& signal, double begin, double period)
    : mSignal(signal), mBegin(begin), mPeriod(period), mDifference(signal.countsAt(begin + period))
{
    const Counts first = signal.countsAt(begin);
    for (size_t channel = 0; channel < mDifference.size(); ++channel) {
        mDifference[channel] -= first[channel];
    }
}

Counts SteadySignal::countsAt(double cycles)
{
    Counts counts = mSignal.countsAt(secondsAt(cycles));
    for (size_t channel = 0; channel < counts.size(); ++channel) {
        counts[channel] -= fractionOf(cycles) * mDifference[channel];
    }
    return counts;
}

double SteadySignal::secondsAt(double cycles) const
{
    return mBegin + fractionOf(cycles) * mPeriod;
}

} // namespace importing
