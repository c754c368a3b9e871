#include "measure/SignalCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "SampleRecord.h"
#include "base/Numbers.h"

namespace measure {

namespace {
constexpr double kLevelsPerFold = 1000.0; ///< classes of rms: 0.1 % apart
constexpr double kMaxLevel = 30000.0;     ///< e to the 30th times the nominal voltage

/** No supply stays farther off. */
constexpr double kLowestShare = 0.85;
constexpr double kHighestShare = 1.15;

/** A recording of a fault, or a long dip, has more periods than that near its nominal voltage. */
constexpr double kMinNormal = 0.05;

/** Of the rms of its periods, and how many of them are near the nominal one. */
struct LevelSummary
{
    double mMedian = 0.0; ///< as a share of the nominal voltage
    double mNormal = 0.0; ///< as a share of the periods
};

double shareOf(int level)
{
    return std::exp(level / kLevelsPerFold);
}

LevelSummary summaryOf(const std::map<int, size_t>& levels)
{
    const size_t count =
        std::accumulate(levels.begin(), levels.end(), size_t{0},
                        [](size_t sum, const auto& level) { return sum + level.second; });
    LevelSummary summary;
    size_t below = 0;
    size_t normal = 0;
    for (const auto& [level, periods] : levels) {
        const double share = shareOf(level);
        summary.mMedian = 2 * below < count ? share : summary.mMedian;
        below += periods;
        normal += share >= kLowestShare && share <= kHighestShare ? periods : 0;
    }
    summary.mNormal =
        count > 0 ? static_cast<double>(normal) / static_cast<double>(count) : summary.mNormal;
    return summary;
}

const std::array<std::complex<double>, kSamplesPerPeriod>& rotations()
{
    static const auto kRotations = [] {
        std::array<std::complex<double>, kSamplesPerPeriod> all;
        for (size_t i = 0; i < all.size(); ++i) {
            all[i] = std::polar(1.0, -base::kTwoPi * static_cast<double>(i) / kSamplesPerPeriod);
        }
        return all;
    }();
    return kRotations;
}

/** Whether the negative sequence is the larger one, and no mere rest of equal phases. */
bool isTurnedRound(const std::array<std::complex<double>, 3>& phases)
{
    const std::complex<double> third = std::polar(1.0, base::kTwoPi / 3.0);
    const double positive = std::abs(phases[0] + third * phases[1] + std::conj(third) * phases[2]);
    const double negative = std::abs(phases[0] + std::conj(third) * phases[1] + third * phases[2]);
    const double largest =
        std::max({std::abs(phases[0]), std::abs(phases[1]), std::abs(phases[2])});
    constexpr double kClearly = 1.5;
    return negative > kClearly * positive && negative > kClearly * largest;
}
} // namespace

void SignalCheck::add(const waveform::SignalBlock& block, MeasurementOutput& /*output*/)
{
    for (size_t begin = 0; begin < block.size();) {
        const size_t end = std::min(block.size(), begin + kSamplesPerPeriod - mLine);
        addLines(block, begin, end);
        mLine += end - begin;
        begin = end;
        if (mLine == kSamplesPerPeriod) {
            endPeriod();
            mLine = 0;
        }
    }
}

void SignalCheck::addLines(const waveform::SignalBlock& block, size_t begin, size_t end)
{
    const std::complex<double>* const rotation = &rotations()[mLine];
    for (size_t system = 0; system < mSystems.size(); ++system) {
        for (size_t phase = 0; phase < kPhases; ++phase) {
            const double* const values = block.mValues[system * kChannelCount / 2 + phase].data();
            Phase sums = mSystems[system].mPhases[phase];
            for (size_t i = begin; i < end; ++i) {
                sums.mSquares += values[i] * values[i];
                sums.mFundamental += values[i] * rotation[i - begin];
            }
            mSystems[system].mPhases[phase] = sums;
        }
    }
}

void SignalCheck::endPeriod()
{
    for (size_t phase = 0; phase < kPhases; ++phase) {
        const double rms = std::sqrt(mSystems[0].mPhases[phase].mSquares / kSamplesPerPeriod);
        if (rms > 0.0 && std::isfinite(rms)) {
            const double level = kLevelsPerFold * std::log(rms / mNominalVolts);
            ++mLevels[phase]
                     [static_cast<int>(std::lround(std::clamp(level, -kMaxLevel, kMaxLevel)))];
        }
    }
    for (System& system : mSystems) {
        const auto& phases = system.mPhases;
        const bool isThere = std::any_of(phases.begin(), phases.end(),
                                         [](const Phase& it) { return it.mSquares > 0.0; });
        system.mPeriods += isThere ? 1 : 0;
        system.mReversed +=
            isTurnedRound({phases[0].mFundamental, phases[1].mFundamental, phases[2].mFundamental})
                ? 1
                : 0;
        system.mPhases = {};
    }
}

std::string SignalCheck::nominalRemark() const
{
    double median = 0.0;
    double normal = 0.0;
    for (const auto& levels : mLevels) {
        const LevelSummary summary = summaryOf(levels);
        median = std::max(median, summary.mMedian);
        normal = std::max(normal, summary.mNormal);
    }
    const bool isFar = median < kLowestShare || median > kHighestShare;
    if (median == 0.0 || !isFar || normal >= kMinNormal) {
        return "";
    }
    return fmt::format(
        "the median of its voltages is {:.3g} V, but the nominal voltage is {:g} V: events are not "
        "found with a wrong nominal voltage; see --nominal and --scale",
        median * mNominalVolts, mNominalVolts);
}

std::vector<std::string> SignalCheck::remarks() const
{
    std::vector<std::string> remarks;
    if (const std::string text = nominalRemark(); !text.empty()) {
        remarks.push_back(text);
    }
    const std::array<const char*, 2> names{"voltages", "currents"};
    for (size_t system = 0; system < mSystems.size(); ++system) {
        if (2 * mSystems[system].mReversed > mSystems[system].mPeriods) {
            remarks.push_back(fmt::format(
                "the negative sequence of the {} is larger than the positive one: are two phases "
                "swapped?",
                names[system]));
        }
    }
    return remarks;
}

} // namespace measure
