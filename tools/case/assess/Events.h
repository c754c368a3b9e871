#pragma once

#include "assess/Phasors.h"

namespace assess {

/** Whether events were looked for in the expected signal: it has events, or a count of them. */
bool areEventsExpected(const ValueTable& expected);

/**
 * Matches events of the same kind and channel one to one, those with the nearest starts first, up
 * to the tolerance. Adds the delay of each start ("dip-start", expected value 0) and the values of
 * its rows ("dip-residual", "dip-duration"), at the expected time of the event. If events were not
 * looked for in the expected signal, measured ones are not additional.
 * @param isPart as in AssessmentOptions
 */
void addEvents(const ValueTable& expected, const ValueTable& measured, qint64 toleranceNs,
               bool isPart, ComputedSeries& computed);

} // namespace assess
