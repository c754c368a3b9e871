#pragma once

#include "importing/MappedSignal.h"

namespace importing {

/**
 * One period of a recording, repeated endlessly, to be played before or after the recording. If the
 * period's end does not meet its beginning, the difference is spread over the period, so the
 * repetition has no jump. Borrows the signal.
 */
class PeriodicExtension
{
public:
    /** The end of the period that stays as recorded, because the recording joins there. */
    enum class Joint
    {
        Beginning,
        End
    };

    /** @param begin, period in s of the recording, which must cover the period */
    PeriodicExtension(MappedSignal& signal, double begin, double period, Joint joint);

    /** @param cycles since the beginning of the period; may be negative */
    Counts countsAt(double cycles);

    /** The time of this phase in the recording, in s. */
    double secondsAt(double cycles) const;

private:
    MappedSignal& mSignal;
    double mBegin;
    double mPeriod;
    Joint mJoint;
    Counts mDifference; ///< between its end and its beginning
};

} // namespace importing
