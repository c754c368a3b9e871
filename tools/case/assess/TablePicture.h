#pragma once

#include <QtGlobal>
#include <functional>
#include <string>
#include <vector>

#include "assess/ValueTable.h"
#include "measure/Quantities.h"
#include "plot/Picture.h"

namespace assess {

/** A request for a picture of a table of measurements. */
struct TablePictureRequest
{
    std::string mTable;
    std::string mQuantity; ///< empty: that of the first row. Requires: reasonNotDrawn() is empty
    std::string mAt;       ///< UTC or seconds since the first value; empty: the first value
};

// Pictures of one time.
inline constexpr char kHarmonics[] = "harmonics";
inline constexpr char kPhasors[] = "phasors";

/** Whether the picture shows one time: "harmonics" and "phasors". */
bool isShownAtMoment(const std::string& quantity);

/** Why a quantity cannot be drawn, with the nearest name; empty if it can be drawn. */
std::string reasonNotDrawn(const std::string& quantity);

/**
 * Whether a file begins like the table of `vx-case measure`; false also if it cannot be read.
 * Throws CaseError for the other forms of that table.
 */
bool isMeasuredTable(const std::string& path);

/** Reads the whole table. Throws CaseError for mistakes in it and for missing values. */
plot::Picture pictureOfTable(const TablePictureRequest& request);

/**
 * Makes pictures of a table of measurements, as plain data. Times start at its first value. Borrows
 * the table, which must be sorted. Throws CaseError for missing values.
 */
class TablePicture
{
public:
    /** Requires: at least one value. @param name of the table, for the title and messages */
    TablePicture(const ValueTable& table, std::string name);

    /** A quantity, with all its channels. Requires: measure::findRowKind() knows it. */
    plot::Picture overTime(const std::string& quantity) const;

    /** The window that contains this time. */
    plot::Picture harmonics(const std::string& at) const;

    /** The frame nearest to this time. */
    plot::Picture phasors(const std::string& at) const;

private:
    using Keys = std::vector<SeriesKey>;

    Keys keysOf(const std::function<bool(const measure::RowKind&)>& isWanted) const;
    qint64 momentOf(const Keys& keys, const std::string& what, const std::string& at) const;
    qint64 timeOf(const std::string& at) const;
    double secondsOf(qint64 utcNs) const;
    plot::Curve curveOf(const SeriesKey& key, bool hasBars) const;
    plot::Picture pictureAt(const std::string& what, qint64 utcNs) const;
    [[noreturn]] void failWithout(const std::string& what) const;

    const ValueTable& mTable;
    std::string mName;
    qint64 mBeginNs = 0; ///< of the first value
};

} // namespace assess
