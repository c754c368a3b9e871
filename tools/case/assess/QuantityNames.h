#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "assess/ValueTable.h"

namespace assess {

// What is computed from the rows of both files: their names as quantities.
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

/** Says that events were looked for, and how many were found; not compared. */
inline constexpr char kEventCount[] = "event-count";

/** The rows of one event begin with this: "dip" for "dip-residual", "dip-duration". */
std::optional<std::string> eventKindOf(std::string_view quantity);

/** "dip-start": when an event of a kind began. */
std::string startOf(const std::string& eventKind);

/** True for a quantity that a file can have, with its order and interval: "harmonic-5-10min". */
bool isMeasured(std::string_view quantity);

/** True for what is computed here. */
bool isComputed(std::string_view quantity);

bool isChannel(std::string_view channel);

/** Degrees, of which 360 are 0. */
bool isAngle(std::string_view quantity);

/** Of the values; "" for a number. Requires: isMeasured() or isComputed(). */
std::string unitOf(const SeriesKey& key);

/** Without order and interval: "harmonic" for "harmonic-5-10min". */
std::string familyOf(const std::string& quantity);

/** The quantity, its family or the group of it that a command line can name: "events", "phasors".
 */
bool isOneOf(const std::string& quantity, const std::set<std::string>& names);

/** How long the interval is that a value is for, up to its time; 0 for that of an instant. */
qint64 intervalNsOf(const std::string& quantity);

/** What a limit can be for: families, quantities and what is computed. */
std::vector<std::string> limitNames();

/** What a row of a file can have. */
std::vector<std::string> measuredNames();

std::vector<std::string> channelNames();

/** What a unit is worth in another, as 1000 for "kV" in "V"; nothing where they do not fit. */
std::optional<double> unitFactor(std::string_view from, std::string_view to);

} // namespace assess
