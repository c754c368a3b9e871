#pragma once

#include <string>
#include <vector>

#include "assess/Assessment.h"
#include "plot/Picture.h"

namespace assess {

/**
 * Leaves room around the curves of a panel, also around one that is constant. Points that are not
 * a number count for nothing. Requires: a point that is a number.
 */
void fitRange(plot::Panel& panel);

/** The series whose values take most of their limits; none where nothing was compared. */
const SeriesResult* worstSeries(const AssessmentResult& result);

/**
 * A picture of a series over time: the expected and the measured values, and below them the error
 * between its limits. Requires: a value at least.
 */
plot::Picture pictureOf(const SeriesResult& series, const std::vector<JudgedValue>& values);

} // namespace assess
