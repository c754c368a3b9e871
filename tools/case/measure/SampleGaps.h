#pragma once

#include <string>
#include <vector>

namespace measure {

/** Finds the first missing samples: a step that is much longer than the previous one. */
class SampleGaps
{
public:
    enum class Clock
    {
        Any,  ///< it may jitter, or be coarse: a gap is longer than 4 ms and ten steps
        Even, ///< the driver's: a single step that is longer than both its neighbours is a gap
    };

    explicit SampleGaps(Clock clock) : mClock(clock) {}

    /** @param seconds the times of the next samples */
    void add(const std::vector<double>& seconds);

    /** The gap, in words; empty if no sample is missing. */
    std::string problem() const;

private:
    bool isGap(double step) const;
    void addEvenStep(double step);
    void setGap(double begin, double length);

    Clock mClock;
    double mLast = 0.0;
    double mStep = 0.0;       ///< the last one that was no gap; 0 until there is one
    double mStepBefore = 0.0; ///< of an even clock
    bool mHasLast = false;
    double mGapSeconds = 0.0; ///< beginning of the first gap
    double mGapLength = 0.0;  ///< 0: there is none
};

} // namespace measure
