#pragma once

#include <string>
#include <vector>

#include "assess/MeasuredMap.h"
#include "assess/ValueTable.h"

namespace assess {

/** The content of a table of values. */
struct ReadTable
{
    ValueTable mValues;               ///< sorted
    size_t mRows = 0;                 ///< below the heading
    std::string mFirstQuantity;       ///< of the first row of a long table with a known quantity
    size_t mMissing = 0;              ///< fields with a word for a missing value
    std::vector<std::string> mUnused; ///< unknown quantities of a long table
};

/**
 * Reads a table line by line with this map. A field with a word for a missing value gives no value.
 *
 * Throws CaseError with file, line and field for a time or number that cannot be read, and with
 * the location in the map for a column that the file does not have.
 */
ReadTable readTable(const std::string& path, const MeasuredMap& map);

} // namespace assess
