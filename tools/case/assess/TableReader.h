#pragma once

#include <string>
#include <vector>

#include "assess/MeasuredMap.h"
#include "assess/ValueTable.h"

namespace assess {

/** What a table of values holds. */
struct ReadTable
{
    ValueTable mValues;               ///< sorted
    size_t mRows = 0;                 ///< below the heading
    std::string mFirstQuantity;       ///< of the first row of a long table that is known
    size_t mMissing = 0;              ///< fields with a word that stands for no value
    std::vector<std::string> mUnused; ///< quantities of a long table that nothing is known of
};

/**
 * Reads a table as the map says, line by line. A field with a word for a missing value gives no
 * value.
 *
 * Throws CaseError with file, line and field for a time or number that cannot be read, and with
 * the place in the map for a column that the file does not have.
 */
ReadTable readTable(const std::string& path, const MeasuredMap& map);

} // namespace assess
