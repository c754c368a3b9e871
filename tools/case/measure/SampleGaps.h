#pragma once

#include <string>
#include <vector>

namespace measure {

/** Finds the first missing samples: a step that is much longer than the previous one. */
class SampleGaps
{
public:
    /** @param seconds the times of the next samples */
    void add(const std::vector<double>& seconds);

    /** The gap, in words; empty if no sample is missing. */
    std::string problem() const;

private:
    double mLast = 0.0;
    double mStep = 0.0; ///< before the last one; 0 until there is one
    bool mHasLast = false;
    double mGapSeconds = 0.0; ///< beginning of the first gap
    double mGapLength = 0.0;  ///< 0: there is none
};

} // namespace measure
