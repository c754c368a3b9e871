#include "assess/Diagnosis.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <map>
#include <optional>
#include <set>

#include "assess/ChannelSwap.h"
#include "assess/ClockDiagnosis.h"
#include "assess/QuantityNames.h"
#include "base/Numbers.h"

namespace assess {

namespace {
constexpr size_t kMinPairs = 4;
constexpr double kSmallestAngle = 0.1;  ///< degrees
constexpr double kSameAngle = 1.0;      ///< degrees
constexpr double kSmallestRatio = 1e-3; ///< difference from 1
constexpr double kExplained = 0.2;      ///< max part of the error that may remain
constexpr double kHalfTurn = 180.0;
constexpr double kTurn = 360.0;

/** A ratio with a well-known cause. */
struct KnownRatio
{
    double mRatio;
    const char* mCause;
};
constexpr std::array<KnownRatio, 9> kKnownRatios{
    {{1.41421356, "peak values instead of rms?"},
     {0.70710678, "rms divided by the square root of 2 once too often?"},
     {1.73205081, "phase to phase instead of phase to neutral?"},
     {0.57735027, "phase to neutral, divided by the square root of 3 once too often?"},
     {1000.0, "values in milli-units? See unit in the map"},
     {0.001, "values in kilo-units? See unit in the map"},
     {100.0, "percent instead of a ratio?"},
     {0.01, "a ratio instead of percent?"},
     {-1.0, "wrong sign: a reversed current transformer?"}}};

const char* causeOf(double ratio)
{
    constexpr double kNear = 0.01;
    for (const KnownRatio& known : kKnownRatios) {
        if (std::abs(ratio / known.mRatio - 1.0) < kNear) {
            return known.mCause;
        }
    }
    return "the ratio of a transformer, or a factor in the map?";
}

/** Names of series by the diagnosis that they share. */
using Groups = std::map<std::string, std::vector<std::string>>;

std::vector<std::string> sentences(const Groups& groups)
{
    constexpr size_t kMaxNames = 8;
    std::vector<std::string> texts;
    for (const auto& [what, names] : groups) {
        const auto end =
            names.begin() + static_cast<std::ptrdiff_t>(std::min(names.size(), kMaxNames));
        const std::string more =
            names.size() > kMaxNames ? fmt::format(" and {} more", names.size() - kMaxNames) : "";
        texts.push_back(fmt::format("{}{}: {}", fmt::join(names.begin(), end, ", "), more, what));
    }
    return texts;
}

/** The factor that explains nearly all of the error, if there is one. */
std::optional<double> ratioOf(const std::vector<Pair>& pairs)
{
    double xx = 0.0;
    double xm = 0.0;
    double squares = 0.0;
    for (const Pair& it : pairs) {
        xx += it.mExpected * it.mExpected;
        xm += it.mExpected * it.mMeasured;
        squares += (it.mMeasured - it.mExpected) * (it.mMeasured - it.mExpected);
    }
    if (pairs.size() < kMinPairs || xx <= 0.0 || xm == 0.0) {
        return std::nullopt;
    }
    const double ratio = xm / xx;
    double left = 0.0;
    for (const Pair& it : pairs) {
        left += std::pow(it.mMeasured - ratio * it.mExpected, 2.0);
    }
    const bool isExplained = std::sqrt(left) <= kExplained * std::sqrt(squares);
    return isExplained && std::abs(ratio - 1.0) > kSmallestRatio ? std::optional(ratio)
                                                                 : std::nullopt;
}

/** The mean error of the angles, if all errors are nearly equal. */
std::optional<double> commonTurn(const std::vector<Pair>& pairs)
{
    constexpr double kAlike = 0.995; // of the length of the mean vector
    std::complex<double> sum;
    for (const Pair& it : pairs) {
        sum += std::polar(1.0, (it.mMeasured - it.mExpected) * base::kRadiansPerDegree);
    }
    if (pairs.size() < kMinPairs || std::abs(sum) < kAlike * static_cast<double>(pairs.size())) {
        return std::nullopt;
    }
    return std::arg(sum) / base::kRadiansPerDegree;
}

/** A diagnosis for angles that are all off by the same amount, which mostly means a delay. */
std::string turnText(double degrees, double hertz)
{
    const double size = std::abs(degrees);
    if (size > kHalfTurn - 2.0) {
        return "180 degrees off: wrong sign, or swapped terminals?";
    }
    if (std::abs(size - kHalfTurn / 2.0) < 2.0) {
        return fmt::format("{:.1f} degrees off: angles of a sine instead of a cosine?", degrees);
    }
    const double milliseconds = 1000.0 * size / (kTurn * hertz);
    return fmt::format(
        "{} by {:.4g} ms, which is {:.4g} degrees: group delay or time zone of the stamps?",
        degrees < 0.0 ? "late" : "early", milliseconds, size);
}

/** Looks for causes of the errors beyond their limits. */
class Diagnostician
{
public:
    Diagnostician(const ValueTable& expected, const ValueTable& measured,
                  const std::vector<SeriesResult>& results, qint64 toleranceNs)
        : mExpected(expected), mMeasured(measured), mResults(results), mToleranceNs(toleranceNs)
    {
    }

    std::vector<std::string> all();

private:
    void findTurns();
    void addTurns(const std::map<std::string, double>& turns);
    void findRatios();
    void findStampDelay();
    std::vector<Pair> pairsOf(const SeriesKey& key) const;
    bool hasBeyond(bool (*isMeant)(std::string_view)) const;
    double hertz() const;

    const ValueTable& mExpected;
    const ValueTable& mMeasured;
    const std::vector<SeriesResult>& mResults;
    const qint64 mToleranceNs;
    std::set<std::string> mSwapped; ///< channels
    std::vector<std::string> mTexts;
};

std::vector<std::string> Diagnostician::all()
{
    const bool isGood = std::all_of(mResults.begin(), mResults.end(), [](const auto& it) {
        return it.mVerdict == Verdict::Within || it.mVerdict == Verdict::NoLimit ||
               it.mVerdict == Verdict::NotJudged;
    });
    if (isGood) {
        return {};
    }
    mTexts = diagnoseClock(mExpected, mMeasured, mToleranceNs);
    if (mTexts.empty()) {
        findStampDelay();
        for (const SwappedChannels& swap : findSwaps(mExpected, mMeasured, mToleranceNs)) {
            mTexts.push_back(swap.mText);
            mSwapped.insert(swap.mChannels.begin(), swap.mChannels.end());
        }
        findTurns();
        findRatios();
    }
    return std::move(mTexts);
}

std::vector<Pair> Diagnostician::pairsOf(const SeriesKey& key) const
{
    const Series* const expected = mExpected.find(key);
    const Series* const measured = mMeasured.find(key);
    return expected == nullptr || measured == nullptr
               ? std::vector<Pair>()
               : matchInTime(*expected, *measured, mToleranceNs).mPairs;
}

bool Diagnostician::hasBeyond(bool (*isMeant)(std::string_view)) const
{
    return std::any_of(mResults.begin(), mResults.end(), [isMeant](const SeriesResult& it) {
        return it.mVerdict == Verdict::Beyond && isMeant(it.mKey.mQuantity);
    });
}

/** The frequency of the expected phasors; 50 Hz if it is not in the table. */
double Diagnostician::hertz() const
{
    const Series* const series = mExpected.find({kPhasorHz, ""});
    constexpr double kUsualHz = 50.0;
    const double value =
        series == nullptr || series->mSamples.empty() ? 0.0 : series->mSamples.front().mValue;
    return value > 0.0 ? value : kUsualHz;
}

void Diagnostician::findTurns()
{
    if (!hasBeyond([](std::string_view name) { return name == kTve || isAngle(name); })) {
        return;
    }
    std::map<std::string, double> turns; // by name of the series
    for (const auto& [key, series] : mExpected.all()) {
        if (isAngle(key.mQuantity) && mSwapped.count(key.mChannel) == 0 &&
            (mSwapped.empty() || key.mQuantity == kAngle)) {
            if (const auto turn = commonTurn(pairsOf(key))) {
                turns[nameOf(key)] = *turn;
            }
        }
    }
    addTurns(turns);
}

/** Series whose angles have the same error share a sentence. */
void Diagnostician::addTurns(const std::map<std::string, double>& turns)
{
    std::vector<std::pair<double, std::vector<std::string>>> groups;
    for (const auto& [name, turn] : turns) {
        const double own = turn;
        const auto group = std::find_if(groups.begin(), groups.end(), [own](const auto& it) {
            const double apart = std::abs(std::remainder(it.first - own, kTurn));
            return apart <= kSameAngle;
        });
        if (group == groups.end()) {
            groups.push_back({turn, {name}});
        } else {
            group->second.push_back(name);
        }
    }
    for (const auto& [turn, names] : groups) {
        if (std::abs(turn) < kSmallestAngle) {
            continue;
        }
        const std::string whose = names.size() == turns.size() && names.size() > 1
                                      ? "all angles"
                                      : fmt::format("{}", fmt::join(names, ", "));
        mTexts.push_back(whose + ": " + turnText(turn, hertz()));
    }
}

/** Looks for a factor, and if there is none, for a delay. */
void Diagnostician::findRatios()
{
    constexpr size_t kMaxDelayed = 20; // each needs a search
    size_t searched = 0;
    Groups ratios;
    Groups delays;
    for (const SeriesResult& it : mResults) {
        const std::string& quantity = it.mKey.mQuantity;
        const bool isMagnitude = !isAngle(quantity) && !isComputed(quantity);
        // Magnitudes of phasors have no limit of their own; the total vector error has one.
        const bool isWrong = it.mVerdict == Verdict::Beyond || quantity == kMagnitude;
        if (!isMagnitude || !isWrong || mSwapped.count(it.mKey.mChannel) > 0) {
            continue;
        }
        if (const auto ratio = ratioOf(pairsOf(it.mKey))) {
            ratios[fmt::format("{:.5g} times what is expected: {}", *ratio, causeOf(*ratio))]
                .push_back(nameOf(it.mKey));
        } else if (!eventKindOf(quantity) && it.mCompared > 0 && searched++ < kMaxDelayed) {
            const double delay =
                delayOf(mExpected.find(it.mKey)->mSamples, mMeasured.find(it.mKey)->mSamples);
            if (delay != 0.0) {
                delays[fmt::format("{} by about {:.4g} ms: group delay, or time stamps at another "
                                   "point of the interval?",
                                   delay > 0.0 ? "late" : "early", 1000.0 * std::abs(delay))]
                    .push_back(nameOf(it.mKey));
            }
        }
    }
    for (const Groups& groups : {ratios, delays}) {
        for (const std::string& text : sentences(groups)) {
            mTexts.push_back(text);
        }
    }
}

/** Finds time stamps that are all late by the same time. */
void Diagnostician::findStampDelay()
{
    Groups groups;
    for (const SeriesResult& it : mResults) {
        const size_t outside = it.mCounts.mLate + it.mCounts.mEarly;
        if (it.mCompared >= kMinPairs && 2 * outside > it.mCompared) {
            const double milliseconds = static_cast<double>(it.mStampDistanceNs) * 1e-6;
            groups[fmt::format("time stamps {} by {:.4g} ms", milliseconds > 0.0 ? "late" : "early",
                               std::abs(milliseconds))]
                .push_back(nameOf(it.mKey));
        }
    }
    mTexts = sentences(groups);
}
} // namespace

std::vector<std::string> diagnose(const ValueTable& expected, const ValueTable& measured,
                                  const std::vector<SeriesResult>& results, qint64 toleranceNs)
{
    return Diagnostician(expected, measured, results, toleranceNs).all();
}

} // namespace assess
