#include "importing/CountLimiter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace importing {

namespace {
constexpr double kMinCount = std::numeric_limits<qint32>::min();
constexpr double kMaxCount = std::numeric_limits<qint32>::max();

/** Rounded down to three digits, which are easily typed. Not finite for 0. */
double roundedDown(double value)
{
    const double unit = std::pow(10.0, std::floor(std::log10(value)) - 2.0);
    return std::floor(value / unit) * unit;
}
} // namespace

std::array<qint32, kChannelCount> CountLimiter::round(const Counts& counts, double seconds)
{
    std::array<qint32, kChannelCount> values{};
    for (size_t channel = 0; channel < counts.size(); ++channel) {
        const double rounded = std::nearbyint(counts[channel]);
        if (!(rounded >= kMinCount && rounded <= kMaxCount)) {
            // A sum whose terms overflow may be NaN.
            const double found = std::isnan(rounded) ? HUGE_VAL : rounded;
            Overflow& overflow = mOverflows[channel];
            if (overflow.mCount++ == 0) {
                overflow.mFirstSeconds = seconds;
                overflow.mFirstCounts = found;
            }
            overflow.mLargest = std::max(overflow.mLargest, std::abs(found));
        }
        values[channel] = static_cast<qint32>(std::fmin(std::fmax(rounded, kMinCount), kMaxCount));
    }
    return values;
}

size_t CountLimiter::clipped() const
{
    size_t count = 0;
    for (const Overflow& overflow : mOverflows) {
        count += overflow.mCount;
    }
    return count;
}

std::string CountLimiter::overflowMessage(const ChannelMap& map,
                                          const MappingOptions& options) const
{
    const auto* const first = std::min_element(
        mOverflows.begin(), mOverflows.end(), [](const Overflow& a, const Overflow& b) {
            return a.mCount > 0 && (b.mCount == 0 || a.mFirstSeconds < b.mFirstSeconds);
        });
    const auto channel = static_cast<size_t>(first - mOverflows.begin());
    const double volt = fittingScale(map, channels::Quantity::Voltage, options.mCountsPerVolt);
    const double ampere = fittingScale(map, channels::Quantity::Current, options.mCountsPerAmpere);
    const bool isKnown = std::isfinite(volt) && std::isfinite(ampere);
    return fmt::format(
        "channel {} ({}) at {:.9f} s: {:.6g} counts do not fit 32 bits; {}--clip limits such "
        "values",
        channel, map.mChannels[channel].mText, first->mFirstSeconds, first->mFirstCounts,
        isKnown ? fmt::format("--scale {:.10g},{:.10g} would fit, ", volt, ampere) : "");
}

double CountLimiter::fittingScale(const ChannelMap& map, channels::Quantity quantity,
                                  double scale) const
{
    double largest = 0.0;
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        if (map.mChannels[channel].mQuantity == quantity) {
            largest = std::max(largest, mOverflows[channel].mLargest);
        }
    }
    return largest > 0.0 ? roundedDown(scale * (kMaxCount / largest)) : scale;
}

} // namespace importing
