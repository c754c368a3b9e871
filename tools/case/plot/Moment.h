#pragma once

#include <string>
#include <vector>

namespace plot {

/** A moment whose waveforms may be of interest. */
struct Moment
{
    double mSeconds;
    double mScore; ///< of a change in the signal: relative size, about 0 to 1
    std::string mText;
};

/**
 * The moments with the highest scores that are far enough apart, in order of time; of equal ones
 * the first.
 *
 * @param apart min distance in s
 */
std::vector<Moment> chooseMoments(std::vector<Moment> moments, size_t max, double apart);

} // namespace plot
