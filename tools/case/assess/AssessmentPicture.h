#pragma once

#include <string>
#include <vector>

#include "assess/Assessment.h"
#include "plot/Picture.h"

namespace assess {

/**
 * Sets the range of a panel with a margin around its curves, even around a constant one. Points
 * that are NaN are ignored. Requires: a point that is a number.
 */
void fitRange(plot::Panel& panel);

/** The series with the largest error relative to its limit; null if nothing was compared. */
const SeriesResult* worstSeries(const AssessmentResult& result);

/**
 * A picture of a series over time: the expected and the measured values, and below them the error
 * with its limits. Requires: at least one value.
 */
plot::Picture pictureOf(const SeriesResult& series, const std::vector<JudgedValue>& values);

} // namespace assess
