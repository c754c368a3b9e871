#pragma once

#include "assess/Phasors.h"

namespace assess {

/** Whether events were looked for in the expected signal: it has some, or a count of them, as 0. */
bool areEventsExpected(const ValueTable& expected);

/**
 * Matches events one to one: of the same kind and channel, those that begin nearest to each other
 * first, up to the tolerance. Adds how late each began ("dip-start", whose expected value is 0),
 * and what its rows say ("dip-residual", "dip-duration"), at the time at which it was expected.
 * Where events were not looked for in the expected signal, measured ones are not additional.
 * @param isPart as in AssessmentOptions
 */
void addEvents(const ValueTable& expected, const ValueTable& measured, qint64 toleranceNs,
               bool isPart, ComputedSeries& computed);

} // namespace assess
