#pragma once

#include "importing/MappedSignal.h"

namespace importing {

/**
 * The first period of an imported recording, repeated for ever: what is played in front of the
 * recording and behind it. Where the period's end does not meet its beginning, the difference is
 * spread over the period. Borrows the signal.
 */
class SteadySignal
{
public:
    /** @param begin, period s on the recording's time, which must cover the period */
    SteadySignal(MappedSignal& signal, double begin, double period);

    /** @param cycles since the beginning of the period; may be negative */
    Counts countsAt(double cycles);

    /** Where that phase lies in the recording, in s. */
    double secondsAt(double cycles) const;

private:
    MappedSignal& mSignal;
    double mBegin;
    double mPeriod;
    Counts mDifference; ///< of its end from its beginning
};

} // namespace importing
