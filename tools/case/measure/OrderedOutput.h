#pragma once

#include <vector>

#include "measure/Measurement.h"

namespace measure {

/**
 * Puts the rows of several meters into the order of their times, equal times into the order of the
 * table of quantities. Holds rows back until the latest is some seconds ahead; what comes later
 * than that, as an event does when it is over, is passed on at once.
 */
class OrderedOutput : public MeasurementOutput
{
public:
    /** Borrows the output. */
    explicit OrderedOutput(MeasurementOutput& output) : mOutput(output) {}

    void add(const Measurement& value) override;

    /** Passes on all that is held. */
    void flush();

private:
    void passUpTo(qint64 utcNs);

    MeasurementOutput& mOutput;
    std::vector<Measurement> mHeld;
    qint64 mFirstUtcNs = 0; ///< of those that are held
    qint64 mLastUtcNs = 0;
};

} // namespace measure
