#pragma once

#include <QtGlobal>
#include <functional>
#include <string>
#include <vector>

#include "assess/ValueTable.h"
#include "measure/Quantities.h"
#include "plot/Picture.h"

namespace assess {

/** What is asked of a table of measurements. */
struct TablePictureRequest
{
    std::string mTable;
    std::string mQuantity; ///< empty: that of the first row; else reasonNotDrawn() is empty
    std::string mAt;       ///< UTC or seconds since the first value; empty: the first moment
};

// What is drawn of one moment.
inline constexpr char kHarmonics[] = "harmonics";
inline constexpr char kPhasors[] = "phasors";

/** True for a quantity of which one moment is drawn: "harmonics" and "phasors". */
bool isOfMoment(const std::string& quantity);

/** Why a quantity cannot be drawn, with the nearest that can; empty for one that can. */
std::string reasonNotDrawn(const std::string& quantity);

/**
 * True for a file that begins as the table of `vx-case measure` does; false for one that cannot be
 * read, too. Throws CaseError for the other forms of that table.
 */
bool isMeasuredTable(const std::string& path);

/** Reads the whole table. Throws CaseError for what is wrong in it, or not there. */
plot::Picture pictureOfTable(const TablePictureRequest& request);

/**
 * Makes plain data of what is drawn of a table of measurements. Times begin at its first value.
 * Borrows the table, which must be sorted. Throws CaseError for values that are not there.
 */
class TablePicture
{
public:
    /** Requires: a value at least. @param name of the table, for the title and messages */
    TablePicture(const ValueTable& table, std::string name);

    /** A quantity, all of its channels. Requires: measure::findRowKind() knows it. */
    plot::Picture overTime(const std::string& quantity) const;

    /** The window that the moment is in. */
    plot::Picture harmonics(const std::string& at) const;

    /** The frame that is nearest to the moment. */
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
