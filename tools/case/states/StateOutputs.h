#pragma once

#include <string>

#include "base/ResultFile.h"
#include "generate/SampleMeter.h"
#include "states/StateSignal.h"

namespace states {

/** A line for each state: its start, duration, frequency, voltages and currents. */
std::string tableOf(const StatePlan& plan, const StateLayout& layout);

/** Measures the lines; the declared voltage is the first phase voltage that is not 0. */
generate::SampleMeter sampleMeterFor(const StatePlan& plan);

/**
 * Writes the states and the values measured in their samples, as one JSON object.
 * The caller commits the file.
 */
void writeTruth(const StatePlan& plan, const StateLayout& layout, const StateSignal& signal,
                const generate::MeasuredValues& measured, base::ResultFile& output);

} // namespace states
