#include "assess/EventDiagnosis.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "assess/QuantityNames.h"

namespace assess {

namespace {
constexpr size_t kMinDurations = 2;
constexpr double kSamePeriods = 0.25; ///< rms values are updated each half period

/** Rapid voltage changes are excluded: their duration follows another rule. */
bool isDurationByPeriods(const std::string& quantity)
{
    return quantity == "dip-duration" || quantity == "swell-duration" ||
           quantity == "interruption-duration";
}
} // namespace

std::vector<std::string> diagnoseEvents(const ComputedSeries& computed, double nominalHz)
{
    size_t count = 0;
    bool areAllShort = nominalHz > 0.0;
    for (const auto& [key, matching] : computed) {
        if (!areAllShort || !isDurationByPeriods(key.mQuantity)) {
            continue;
        }
        count += matching.mPairs.size();
        areAllShort =
            std::all_of(matching.mPairs.begin(), matching.mPairs.end(), [=](const Pair& it) {
                const double periods = (it.mMeasured - it.mExpected) * nominalHz;
                return std::abs(periods + 1.0) <= kSamePeriods;
            });
    }
    if (!areAllShort || count < kMinDurations) {
        return {};
    }
    return {
        fmt::format("all {} durations of events are one period too short: does the device take the "
                    "start of the last period as the end of the event?",
                    count)};
}

} // namespace assess
