#pragma once

#include <QtGlobal>

#include "measure/Quantities.h"

namespace measure {

/** Whether a value was measured in the samples or is known from the generation of the signal. */
enum class Origin : unsigned char
{
    Measured,
    ClosedForm,
};

/** One value of one quantity, a row of the table. */
struct Measurement
{
    qint64 mUtcNs = 0; ///< since the epoch: its instant, or the end of its interval
    double mValue = 0.0;
    RowKind mKind;
    Channel mChannel = Channel::None;
    Origin mOrigin = Origin::Measured;
};

/** Receives values, which are sorted by time within each quantity. */
class MeasurementOutput
{
public:
    MeasurementOutput() = default;
    MeasurementOutput(const MeasurementOutput&) = delete;
    MeasurementOutput& operator=(const MeasurementOutput&) = delete;
    virtual ~MeasurementOutput() = default;

    virtual void add(const Measurement& value) = 0;
};

} // namespace measure
