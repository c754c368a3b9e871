#pragma once

#include <vector>

#include "measure/Measurement.h"

namespace measure {

/**
 * Sorts the rows of several meters by time; equal times by the table of quantities. Holds rows back
 * until the latest one is some seconds ahead. A row that comes even later, such as that of an event
 * at its end, is passed on at once.
 */
class OrderedOutput : public MeasurementOutput
{
public:
    /** Borrows the output. */
    explicit OrderedOutput(MeasurementOutput& output) : mOutput(output) {}

    void add(const Measurement& value) override;

    /** Passes on all held rows. */
    void flush();

private:
    void passUpTo(qint64 utcNs);

    MeasurementOutput& mOutput;
    std::vector<Measurement> mHeld;
    qint64 mFirstUtcNs = 0; ///< of those that are held
    qint64 mLastUtcNs = 0;
};

} // namespace measure
