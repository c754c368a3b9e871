#pragma once

#include <QtGlobal>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "assess/TimeFormat.h"
#include "states/Location.h"

namespace assess {

/** A column of a table: its name in the heading, or its number. */
struct ColumnName
{
    std::string mName;
    size_t mNumber = 0; ///< from 1; 0: by the name
    states::Location mLocation;
};

/** A column of a wide table, with one quantity of one channel. */
struct WideColumn
{
    ColumnName mColumn;
    std::string mQuantity;
    std::string mChannel;
    double mFactor = 1.0; ///< converts its numbers into the unit of the quantity
};

/** A long table has one value per row; columns name its quantity, channel and unit. */
struct LongColumns
{
    ColumnName mQuantity;
    std::optional<ColumnName> mChannel; ///< none: no channel
    ColumnName mValue;
    std::optional<ColumnName> mUnit; ///< none: that of the quantity
};

/** The format of a table of measured values. */
struct MeasuredMap
{
    std::string mFileName; ///< of the map, for messages; empty for the table of `vx-case measure`
    ColumnName mTime;
    TimeFormat mFormat;
    qint64 mOffsetNs = 0; ///< is added to each time
    char mSeparator = ',';
    char mDecimalSign = '.';
    size_t mHeadingLine = 1;
    std::vector<std::string> mMissing{""}; ///< words for a missing value
    std::vector<WideColumn> mWide;
    std::optional<LongColumns> mLong;
    double mFactor = 1.0; ///< of all values of a long table

    // Our names for the words of a long table; other words stay unchanged.
    std::map<std::string, std::string> mQuantities;
    std::map<std::string, std::string> mChannels;
};

/** The format of `vx-case measure`: utc,quantity,channel,value,unit,origin. */
MeasuredMap measureMap();

/**
 * Reads a map in TOML. Throws CaseError with file, line and column for mistakes: unknown keys,
 * quantities, channels and units, and keys that contradict each other.
 */
MeasuredMap readMeasuredMap(const std::string& path);

/** The same for a text. @param name of the file, for messages */
MeasuredMap parseMeasuredMap(std::string_view text, const std::string& name);

} // namespace assess
