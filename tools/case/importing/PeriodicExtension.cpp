#include "importing/PeriodicExtension.h"

#include <cmath>

namespace importing {

namespace {
double fractionOf(double cycles)
{
    return cycles - std::floor(cycles);
}
} // namespace

PeriodicExtension::PeriodicExtension(MappedSignal& signal, double begin, double period, Joint joint)
    : mSignal(signal),
      mBegin(begin),
      mPeriod(period),
      mJoint(joint),
      mDifference(signal.countsAt(begin + period))
{
    const Counts first = signal.countsAt(begin);
    for (size_t channel = 0; channel < mDifference.size(); ++channel) {
        mDifference[channel] -= first[channel];
    }
}

Counts PeriodicExtension::countsAt(double cycles)
{
    const double share = fractionOf(cycles) - (mJoint == Joint::End ? 1.0 : 0.0);
    Counts counts = mSignal.countsAt(secondsAt(cycles));
    for (size_t channel = 0; channel < counts.size(); ++channel) {
        counts[channel] -= share * mDifference[channel];
    }
    return counts;
}

double PeriodicExtension::secondsAt(double cycles) const
{
    return mBegin + fractionOf(cycles) * mPeriod;
}

} // namespace importing
