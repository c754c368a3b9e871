#pragma once

#include <QtGlobal>
#include <optional>
#include <vector>

namespace measure {

/**
 * The short-term severity of 10 minutes, from the smoothed percentiles of IEC 61000-4-15. They are
 * computed from the levels themselves, not from classes.
 * @param levels not empty; their order is lost
 */
double shortTermSeverity(std::vector<float>& levels);

/** The values of one voltage at the end of a second, and of longer intervals. */
struct FlickerValues
{
    std::optional<double> mInstantaneous; ///< the largest level of the second
    std::optional<double> mShortTerm;
    std::optional<double> mLongTerm;
};

/**
 * The flicker levels of one voltage, 100 per second of UTC, and the values at the end of each
 * second, each 10 minutes and each two hours of UTC. An interval with a missing level has no value.
 */
class FlickerLevels
{
public:
    static constexpr qint64 kTickNs = 10'000'000;

    FlickerLevels();

    /**
     * @param tick of the level: UTC in kTickNs; later than the one before
     * @param largest of all levels during the tick
     * @return values of the interval that ends with the next tick
     */
    FlickerValues add(qint64 tick, double level, double largest);

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
