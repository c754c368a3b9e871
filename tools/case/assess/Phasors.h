#pragma once

#include <map>
#include <string>
#include <vector>

#include "assess/Matching.h"
#include "assess/ValueTable.h"

namespace assess {

/** Series that are computed from the rows of both files, with their matched values. */
using ComputedSeries = std::map<SeriesKey, Matching>;

/**
 * Adds the total vector error of each channel that has magnitudes and angles in both tables, in
 * percent: 100 |measured - expected| / |expected|. Its expected value is 0.
 * @param isPart as in AssessmentOptions
 */
void addVectorErrors(const ValueTable& expected, const ValueTable& measured, qint64 toleranceNs,
                     bool isPart, ComputedSeries& computed);

/**
 * The samples of a series from half an interval before the expected ones to half an interval after
 * them; as matchInTime(), within the tolerance if only one is expected.
 */
Series partOf(const Series& measured, const Series& expected, qint64 toleranceNs);

} // namespace assess
