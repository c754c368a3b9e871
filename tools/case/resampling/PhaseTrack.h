#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace resampling {

/**
 * The phase of a fundamental over time, in periods from the beginning, without its jumps: the clock
 * by which 360 samples are one period. It rises.
 */
class PhaseTrack
{
public:
    /** A time range in s in which the phase was extrapolated. */
    using Gap = std::pair<double, double>;

    /**
     * @param begin s, of the first point
     * @param hop s between two points
     * @param cycles at the points, at least two, rising
     */
    PhaseTrack(double begin, double hop, std::vector<double> cycles, std::vector<Gap> gaps);

    /** The phase at a time; beyond the points it is extrapolated with the slope at the end. */
    double cyclesAt(double seconds) const;

    /** The time in s at which this phase is reached. */
    double secondsAt(double cycles) const;

    /** In order of time; at the ends only those that are longer than a window. */
    const std::vector<Gap>& gaps() const { return mGaps; }

private:
    size_t intervalOf(double points) const;

    double mBegin;
    double mHop;
    std::vector<double> mCycles;
    std::vector<Gap> mGaps;
};

} // namespace resampling
