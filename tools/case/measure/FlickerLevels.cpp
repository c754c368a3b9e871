#include "measure/FlickerLevels.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <initializer_list>

namespace measure {

namespace {
constexpr qint64 kTicksInSecond = 100;
constexpr qint64 kTicksInShortTerm = 600 * kTicksInSecond;
constexpr int kShortTermsInLongTerm = 12;

/**
 * The level that is exceeded during this percentage of the time. Requires: levels in falling order.
 */
double levelExceeded(const std::vector<float>& levels, double percent)
{
    const double position = percent / 100.0 * static_cast<double>(levels.size()) - 0.5;
    const double bounded = std::clamp(position, 0.0, static_cast<double>(levels.size() - 1));
    const auto index = static_cast<size_t>(bounded);
    const size_t next = std::min(index + 1, levels.size() - 1);
    const double fraction = bounded - static_cast<double>(index);
    return (1.0 - fraction) * static_cast<double>(levels[index]) +
           fraction * static_cast<double>(levels[next]);
}

double meanExceeded(const std::vector<float>& levels, std::initializer_list<double> percents)
{
    double sum = 0.0;
    for (const double percent : percents) {
        sum += levelExceeded(levels, percent);
    }
    return sum / static_cast<double>(percents.size());
}
} // namespace

double shortTermSeverity(std::vector<float>& levels)
{
    std::sort(levels.begin(), levels.end(), std::greater<>());
    return std::sqrt(0.0314 * levelExceeded(levels, 0.1) +
                     0.0525 * meanExceeded(levels, {0.7, 1.0, 1.5}) +
                     0.0657 * meanExceeded(levels, {2.2, 3.0, 4.0}) +
                     0.28 * meanExceeded(levels, {6.0, 8.0, 10.0, 13.0, 17.0}) +
                     0.08 * meanExceeded(levels, {30.0, 50.0, 80.0}));
}

FlickerLevels::FlickerLevels()
{
    mLevels.reserve(static_cast<size_t>(kTicksInShortTerm));
}

FlickerValues FlickerLevels::add(qint64 tick, double level, double largest)
{
    if (tick != mLastTick + 1) {
        mInSecond = 0;
        mLargest = 0.0;
        mLevels.clear();
        mCubes = 0.0;
        mShortTermCount = 0;
    }
    mLastTick = tick;
    mLargest = std::max(mLargest, largest);
    ++mInSecond;
    mLevels.push_back(static_cast<float>(level));
    FlickerValues values;
    if ((tick + 1) % kTicksInSecond == 0) {
        if (mInSecond == kTicksInSecond) {
            values.mInstantaneous = mLargest;
        }
        mLargest = 0.0;
        mInSecond = 0;
    }
    if ((tick + 1) % kTicksInShortTerm == 0) {
        values.mShortTerm = endShortTerm();
        values.mLongTerm = endLongTerm((tick + 1) / kTicksInShortTerm, values.mShortTerm);
    }
    return values;
}

std::optional<double> FlickerLevels::endShortTerm()
{
    std::optional<double> severity;
    if (mLevels.size() == static_cast<size_t>(kTicksInShortTerm)) {
        severity = shortTermSeverity(mLevels);
    }
    mLevels.clear();
    return severity;
}

/** @param ended number of the ended 10-minute interval since the epoch */
std::optional<double> FlickerLevels::endLongTerm(qint64 ended, std::optional<double> shortTerm)
{
    if (shortTerm) {
        mCubes += std::pow(*shortTerm, 3);
        ++mShortTermCount;
    }
    if (ended % kShortTermsInLongTerm != 0) {
        return std::nullopt;
    }
    std::optional<double> severity;
    if (mShortTermCount == kShortTermsInLongTerm) {
        severity = std::cbrt(mCubes / kShortTermsInLongTerm);
    }
    mCubes = 0.0;
    mShortTermCount = 0;
    return severity;
}

} // namespace measure
