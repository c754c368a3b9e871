#include "measure/VoltageLevels.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace measure {

namespace {
constexpr double kLevelsPerFold = 1000.0;

/** Range of steady supply voltages, as a part of the nominal voltage. */
constexpr double kLowestShare = 0.85;
constexpr double kHighestShare = 1.15;

/** Even a recording of a fault or of a long dip has a larger part of its values in that range. */
constexpr double kMinNormal = 0.05;
} // namespace

void VoltageLevels::add(double rms)
{
    if (rms > 0.0 && std::isfinite(rms)) {
        ++mCounts[static_cast<int>(std::lround(kLevelsPerFold * std::log(rms)))];
    }
}

std::optional<double> VoltageLevels::medianFarFrom(double nominalVolts) const
{
    const size_t count =
        std::accumulate(mCounts.begin(), mCounts.end(), size_t{0},
                        [](size_t sum, const auto& level) { return sum + level.second; });
    double median = 0.0;
    size_t below = 0;
    size_t normal = 0;
    for (const auto& [level, values] : mCounts) {
        const double volts = std::exp(level / kLevelsPerFold);
        const double share = volts / nominalVolts;
        median = 2 * below < count ? volts : median;
        below += values;
        normal += share >= kLowestShare && share <= kHighestShare ? values : 0;
    }
    const bool isFar =
        median < kLowestShare * nominalVolts || median > kHighestShare * nominalVolts;
    const bool hasNormal = static_cast<double>(normal) >= kMinNormal * static_cast<double>(count);
    return count == 0 || !isFar || hasNormal ? std::nullopt : std::optional(median);
}

std::optional<double> medianFarFrom(const std::array<VoltageLevels, 3>& voltages,
                                    double nominalVolts)
{
    std::optional<double> highest;
    for (const VoltageLevels& voltage : voltages) {
        const auto median = voltage.medianFarFrom(nominalVolts);
        if (!median && !voltage.isEmpty()) {
            return std::nullopt;
        }
        highest = std::max(highest, median);
    }
    return highest;
}

} // namespace measure
