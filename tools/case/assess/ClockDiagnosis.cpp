#include "assess/ClockDiagnosis.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

#include "assess/Matching.h"
#include "assess/QuantityNames.h"
#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace assess {

namespace {
using Samples = std::vector<Sample>;

constexpr size_t kMaxProbes = 2000;
constexpr size_t kMaxProbedSeries = 4;
constexpr double kFarBetter = 0.3; ///< of the error
constexpr double kNearlyAll = 0.98;
constexpr int kMaxShift = 20; ///< intervals
constexpr int kShiftsPerInterval = 4;
constexpr qint64 kMaxIntervalNs = 86400 * waveform::kSecondInNs;

/** How well series agree when their time stamps are shifted. */
struct Agreement
{
    size_t mProbes = 0;
    size_t mMatched = 0;
    double mSquares = 0.0;

    double error() const
    {
        return mMatched == 0 ? 0.0 : std::sqrt(mSquares / static_cast<double>(mMatched));
    }
};

auto firstAt(const Samples& samples, qint64 ns)
{
    return std::lower_bound(samples.begin(), samples.end(), ns,
                            [](const Sample& it, qint64 time) { return it.mUtcNs < time; });
}

/** The expected value at a time, interpolated; no value before the first or after the last. */
std::optional<double> valueAtTime(const Samples& samples, qint64 ns)
{
    const auto after = firstAt(samples, ns);
    if (after == samples.end()) {
        return std::nullopt;
    }
    if (after->mUtcNs == ns) {
        return after->mValue;
    }
    if (after == samples.begin()) {
        return std::nullopt;
    }
    const Sample& before = after[-1];
    const double share = static_cast<double>(ns - before.mUtcNs) /
                         static_cast<double>(after->mUtcNs - before.mUtcNs);
    return before.mValue + share * (after->mValue - before.mValue);
}

void addAgreement(const Samples& expected, const Samples& measured, qint64 offsetNs,
                  qint64 windowNs, Agreement& agreement)
{
    const size_t stride = expected.size() / kMaxProbes + 1;
    for (size_t i = 0; i < expected.size(); i += stride) {
        const qint64 ns = expected[i].mUtcNs + offsetNs;
        const auto found = firstAt(measured, ns - windowNs);
        ++agreement.mProbes;
        if (found != measured.end() && found->mUtcNs <= ns + windowNs) {
            ++agreement.mMatched;
            const double error = found->mValue - expected[i].mValue;
            agreement.mSquares += error * error;
        }
    }
}

/** A series that both tables have, and its tolerance of time stamps. */
struct ProbedSeries
{
    double mVariation; ///< of the expected values, relative to the largest
    const Samples* mExpected;
    const Samples* mMeasured;
    qint64 mWindowNs;
};

double variationOf(const Samples& samples)
{
    const auto [min, max] =
        std::minmax_element(samples.begin(), samples.end(),
                            [](const Sample& a, const Sample& b) { return a.mValue < b.mValue; });
    const double size = std::max(std::abs(min->mValue), std::abs(max->mValue));
    return size > 0.0 ? (max->mValue - min->mValue) / size : 0.0;
}

/** At most a quarter of the spacing: a wider window would match at any offset. */
qint64 windowOf(const Samples& expected, qint64 toleranceNs)
{
    constexpr qint64 kMinNs = waveform::kSecondInNs / 1000;
    return std::min(std::max(toleranceNs, kMinNs), spacingOf(expected) / 4);
}

/** The series that are best for finding an offset: those that vary most, without angles. */
std::vector<ProbedSeries> probedSeries(const ValueTable& expected, const ValueTable& measured,
                                       qint64 toleranceNs)
{
    std::vector<ProbedSeries> probed;
    for (const auto& [key, series] : expected.all()) {
        const Series* const found = measured.find(key);
        if (found == nullptr || found->mSamples.empty() || series.mSamples.size() < 2 ||
            isAngle(key.mQuantity) || eventKindOf(key.mQuantity)) {
            continue;
        }
        probed.push_back({variationOf(series.mSamples), &series.mSamples, &found->mSamples, 0});
    }
    std::stable_sort(probed.begin(), probed.end(),
                     [](const auto& a, const auto& b) { return a.mVariation > b.mVariation; });
    probed.resize(std::min(probed.size(), kMaxProbedSeries));
    for (ProbedSeries& it : probed) {
        it.mWindowNs = windowOf(*it.mExpected, toleranceNs);
    }
    return probed;
}

/** Whole seconds up to a minute, half hours up to 14 h, a day; each with both signs. */
std::vector<qint64> clockOffsets()
{
    constexpr int kHalfHour = 1800;
    constexpr int kDay = 86400;
    std::vector<qint64> seconds;
    for (int i = 1; i <= 60; ++i) {
        seconds.push_back(i);
    }
    for (int i = 1; i <= 28; ++i) {
        seconds.push_back(qint64{i} * kHalfHour);
    }
    seconds.push_back(kDay);
    const size_t count = seconds.size();
    for (size_t i = 0; i < count; ++i) {
        seconds.push_back(-seconds[i]);
    }
    return seconds;
}

const char* clockHint(qint64 seconds)
{
    constexpr qint64 kHalfHour = 1800;
    switch (std::abs(seconds)) {
        case 18:
            return "GPS time instead of UTC?";
        case 37:
            return "TAI instead of UTC?";
        case 86400:
            return "a wrong date?";
        default:
            return seconds % kHalfHour == 0 ? "a local time instead of UTC? See offset in the map"
                                            : "a clock error of whole seconds?";
    }
}

/** Searches the clock offset at which a few series agree. */
class OffsetSearch
{
public:
    explicit OffsetSearch(std::vector<ProbedSeries> probed)
        : mProbed(std::move(probed)), mBase(agreement(0))
    {
    }

    std::optional<qint64> find() const;

private:
    Agreement agreement(qint64 offsetNs) const;
    bool isFarBetter(const Agreement& it) const;

    const std::vector<ProbedSeries> mProbed;
    const Agreement mBase;
};

Agreement OffsetSearch::agreement(qint64 offsetNs) const
{
    Agreement sum;
    for (const ProbedSeries& it : mProbed) {
        addAgreement(*it.mExpected, *it.mMeasured, offsetNs, it.mWindowNs, sum);
    }
    return sum;
}

/** True if nearly all values match where few did before, or if their errors nearly vanish. */
bool OffsetSearch::isFarBetter(const Agreement& it) const
{
    constexpr size_t kFew = 4;
    const auto nearlyAll = static_cast<size_t>(kNearlyAll * static_cast<double>(it.mProbes));
    if (it.mMatched >= std::max(nearlyAll, kFew) && it.mMatched > mBase.mMatched) {
        const bool isRarer =
            static_cast<double>(mBase.mMatched) < kNearlyAll * static_cast<double>(it.mMatched);
        return isRarer && (mBase.mMatched < kFew || it.error() <= mBase.error() * 1.5 + 1e-9);
    }
    return it.mMatched >= kFew && 2 * it.mMatched >= it.mProbes &&
           it.error() < kFarBetter * mBase.error();
}

std::optional<qint64> OffsetSearch::find() const
{
    std::optional<qint64> best;
    Agreement bestAgreement;
    for (const qint64 seconds : clockOffsets()) {
        const Agreement it = agreement(seconds * waveform::kSecondInNs);
        const bool isBetter =
            !best || it.mMatched > bestAgreement.mMatched ||
            (it.mMatched == bestAgreement.mMatched && it.error() < bestAgreement.error());
        if (isFarBetter(it) && isBetter) {
            best = seconds;
            bestAgreement = it;
        }
    }
    return best;
}
} // namespace

std::vector<std::string> diagnoseClock(const ValueTable& expected, const ValueTable& measured,
                                       qint64 toleranceNs)
{
    const auto seconds = OffsetSearch(probedSeries(expected, measured, toleranceNs)).find();
    if (!seconds) {
        return {};
    }
    return {fmt::format("all time stamps are {} by {} s: {}", *seconds > 0 ? "late" : "early",
                        std::abs(*seconds), clockHint(*seconds))};
}

double delayOf(const std::vector<Sample>& expected, const std::vector<Sample>& measured)
{
    const qint64 spacingNs = spacingOf(expected);
    const qint64 stepNs = spacingNs < kMaxIntervalNs ? spacingNs / kShiftsPerInterval : 0;
    const size_t stride = measured.size() / kMaxProbes + 1;
    const auto errorAt = [&](qint64 shiftNs) {
        Agreement sum;
        for (size_t i = 0; i < measured.size(); i += stride) {
            if (const auto value = valueAtTime(expected, measured[i].mUtcNs - shiftNs)) {
                ++sum.mMatched;
                sum.mSquares += std::pow(measured[i].mValue - *value, 2.0);
            }
        }
        return sum.mMatched < kMaxShift ? std::optional<double>() : std::optional(sum.error());
    };
    const std::optional<double> base = stepNs > 0 ? errorAt(0) : std::nullopt;
    double least = base.value_or(0.0);
    qint64 best = 0;
    for (int i = -kMaxShift * kShiftsPerInterval; base && i <= kMaxShift * kShiftsPerInterval;
         ++i) {
        const std::optional<double> error = errorAt(i * stepNs);
        if (error && *error < least) {
            least = *error;
            best = i * stepNs;
        }
    }
    return base && least < kFarBetter * *base
               ? static_cast<double>(best) * base::kSecondsPerNanosecond
               : 0.0;
}

} // namespace assess
