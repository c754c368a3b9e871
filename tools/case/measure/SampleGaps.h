#pragma once

#include <string>
#include <vector>

namespace measure {

/** Finds where samples are missing: a step that is much longer than the one before it. */
class SampleGaps
{
public:
    /** @param seconds the times of the next samples */
    void add(const std::vector<double>& seconds);

    /** What the user has to know; empty where no sample is missing. */
    std::string remark() const;

private:
    double mLast = 0.0;
    double mStep = 0.0; ///< before the last one; 0 until there is one
    bool mHasLast = false;
    size_t mCount = 0;
    double mFirstSeconds = 0.0; ///< where the first gap begins
    double mFirstLength = 0.0;
};

} // namespace measure
