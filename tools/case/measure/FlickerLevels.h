#pragma once

#include <QtGlobal>
#include <optional>
#include <vector>

namespace measure {

/**
 * The short-term severity of 10 minutes by the percentiles of IEC 61000-4-15, smoothed as it says.
 * They are taken from the levels themselves, not from classes.
 * @param levels not empty; their order is lost
 */
double shortTermSeverity(std::vector<float>& levels);

/** What is known of one voltage at the end of a second or more. */
struct FlickerValues
{
    std::optional<double> mInstantaneous; ///< the largest level of the second
    std::optional<double> mShortTerm;
    std::optional<double> mLongTerm;
};

/**
 * The flicker levels of one voltage, taken 100 times a second of UTC, and what follows from them at
 * the end of each second, of each 10 minutes and of each two hours of UTC. Intervals of which a
 * level is missing have no value.
 */
class FlickerLevels
{
public:
    static constexpr qint64 kTickNs = 10'000'000;

    FlickerLevels();

    /**
     * @param tick of the level: UTC in kTickNs; later than the one before
     * @return values of the interval that ends with the next tick
     */
    FlickerValues add(qint64 tick, double level);

private:
    std::optional<double> endShortTerm();
    std::optional<double> endLongTerm(qint64 ended, std::optional<double> shortTerm);

    qint64 mLastTick = -1;
    double mLargest = 0.0;
    qint64 mInSecond = 0;       ///< levels of it, up to now
    std::vector<float> mLevels; ///< of the 10 minutes, up to now
    double mCubes = 0.0;        ///< of the two hours' severities
    int mShortTermCount = 0;
};

} // namespace measure
