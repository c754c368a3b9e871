#pragma once

#include <string>
#include <vector>

namespace plot {

/** Something that may be worth a look at the waveforms. */
struct Moment
{
    double mSeconds;
    double mScore; ///< of a change in the signal: relative to it, about 0 to 1
    std::string mText;
};

/**
 * Those with the highest scores that lie apart, in order of time; of equal ones the first.
 *
 * @param apart in s
 */
std::vector<Moment> chooseMoments(std::vector<Moment> moments, size_t max, double apart);

} // namespace plot
