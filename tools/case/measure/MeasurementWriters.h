#pragma once

#include <memory>

#include "base/ResultFile.h"
#include "measure/Measurement.h"
#include "measure/Selection.h"

namespace measure {

enum class TableForm
{
    Long, ///< CSV, a row a value: utc,quantity,channel,value,unit,origin
    Wide, ///< CSV, a row an instant, a column a quantity and channel
    Json  ///< an object a line and value
};

/** First line of a long table: by it others recognise the file. */
inline constexpr char kLongHeading[] = "utc,quantity,channel,value,unit,origin";

/** "measured" or "closed form". */
const char* nameOf(Origin origin);

/** Writes measurements as a table. Borrows the file, which the caller commits. */
class MeasurementWriter : public MeasurementOutput
{
public:
    /** All values have been added. */
    virtual void finish() = 0;
};

/** @param selection decides about the columns of a wide table */
std::unique_ptr<MeasurementWriter> makeWriter(TableForm form, const Selection& selection,
                                              base::ResultFile& output);

} // namespace measure
