#pragma once

#include "importing/MappedSignal.h"

namespace importing {

/**
 * One period of a recording, repeated without end: what is played before the recording or after
 * it. Where the period's end does not meet its beginning, the difference is spread over the
 * period, so that the repetition has no jump. Borrows the signal.
 */
class PeriodicExtension
{
public:
    /** Which end of the period stays as recorded: that at which the recording joins. */
    enum class Joint
    {
        Beginning,
        End
    };

    /** @param begin, period s on the recording's time, which must cover the period */
    PeriodicExtension(MappedSignal& signal, double begin, double period, Joint joint);

    /** @param cycles since the beginning of the period; may be negative */
    Counts countsAt(double cycles);

    /** Where that phase lies in the recording, in s. */
    double secondsAt(double cycles) const;

private:
    MappedSignal& mSignal;
    double mBegin;
    double mPeriod;
    Joint mJoint;
    Counts mDifference; ///< of its end from its beginning
};

} // namespace importing
