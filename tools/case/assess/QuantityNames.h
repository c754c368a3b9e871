#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

// Names of the quantities that are computed from the rows of both files.
inline constexpr char kTve[] = "tve";
inline constexpr char kStepDelay[] = "step-delay";
inline constexpr char kStepOvershoot[] = "step-overshoot";
inline constexpr char kStepResponse[] =
    "step-response"; ///< followed by "-tve", "-frequency", "-rocof"

// Phasors.
inline constexpr char kMagnitude[] = "phasor-magnitude";
inline constexpr char kAngle[] = "phasor-angle";
inline constexpr char kPositiveMagnitude[] = "positive-sequence-magnitude";
inline constexpr char kPositiveAngle[] = "positive-sequence-angle";
inline constexpr char kPhasorHz[] = "frequency-pmu";
inline constexpr char kRocof[] = "rocof";

/** Shows that events were looked for, and their number. */
inline constexpr char kEventCount[] = "event-count";

/** The first word in the rows of an event: "dip" for "dip-residual", "dip-duration". */
std::optional<std::string> eventKindOf(std::string_view quantity);

/** Name of the quantity for the start of an event: "dip-start". */
std::string startOf(const std::string& eventKind);

/** Whether a file can have this quantity, with order and interval: "harmonic-5-10min". */
bool isMeasured(std::string_view quantity);

/** Whether this quantity is computed here. */
bool isComputed(std::string_view quantity);

bool isChannel(std::string_view channel);

/** Whether the values are angles in degrees, so that 360 is the same as 0. */
bool isAngle(std::string_view quantity);

/** Unit of the values; "" for a number. Requires: isMeasured() or isComputed(). */
std::string unitOf(const SeriesKey& key);

/** Without order and interval: "harmonic" for "harmonic-5-10min". */
std::string familyOf(const std::string& quantity);

/** Whether the names contain the quantity, its family or its group ("events", "phasors"). */
bool isOneOf(const std::string& quantity, const std::set<std::string>& names);

/** Length of the interval of a value, which ends at its time; 0 for the value of an instant. */
qint64 intervalNsOf(const std::string& quantity);

/** Names that a limit can have: families, quantities and computed quantities. */
std::vector<std::string> limitNames();

/** Names that a row of a file can have. */
std::vector<std::string> measuredNames();

std::vector<std::string> channelNames();

/** Factor from one unit to another: 1000 for "kV" to "V"; nothing if they do not fit. */
std::optional<double> unitFactor(std::string_view from, std::string_view to);

} // namespace assess
