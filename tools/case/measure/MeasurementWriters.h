#pragma once

#include <memory>

#include "base/ResultFile.h"
#include "measure/Measurement.h"
#include "measure/Selection.h"

namespace measure {

enum class TableForm
{
    Long, ///< CSV, one value per row: utc,quantity,channel,value,unit,origin
    Wide, ///< CSV, a row per instant, a column per quantity and channel
    Json  ///< one object per line and value
};

/** First line of a long table; readers recognize the file by it. */
inline constexpr char kLongHeading[] = "utc,quantity,channel,value,unit,origin";

/** "measured" or "closed form". */
const char* nameOf(Origin origin);

/** Writes measurements as a table. Borrows the file, which the caller commits. */
class MeasurementWriter : public MeasurementOutput
{
public:
    /** To be called after the last value. */
    virtual void finish() = 0;
};

/** @param selection selects the columns of a wide table */
std::unique_ptr<MeasurementWriter> makeWriter(TableForm form, const Selection& selection,
                                              base::ResultFile& output);

} // namespace measure
