#pragma once

#include <cstddef>
#include <vector>

namespace resampling {

/**
 * The times of the samples of a source: segments of equal steps, found from their time stamps.
 * Stamps with jitter, because they are rounded or read from a clock, are replaced by the line
 * through them. A change of the rate or a gap begins a new segment.
 *
 * Adjacent segments share the sample between them, so they cover the time from the first sample to
 * the last without a gap.
 */
class SampleTimes
{
public:
    struct Segment
    {
        size_t mFirst; ///< index of its first sample
        size_t mLast;  ///< index of its last sample, at least mFirst + 1
        double mStart; ///< s, of its first sample
        double mStep;  ///< s between two samples, above 0

        size_t sampleCount() const { return mLast - mFirst + 1; }
        double timeOf(size_t sample) const
        {
            return mStart + static_cast<double>(sample - mFirst) * mStep;
        }
    };

    /**
     * @param seconds of each sample; must not fall
     * @param areExact the stamps were computed from a rate, so there is no jitter
     * Requires: at least two different stamps.
     */
    SampleTimes(const std::vector<double>& seconds, bool areExact);

    const std::vector<Segment>& segments() const { return mSegments; }

    /** The segment that contains the time; the first or the last one for times outside. */
    const Segment& segmentAt(double seconds) const;

    /** Index of the sample that is nearest to the time. */
    size_t nearestSample(double seconds) const;

    /** The tick in s of a coarse clock whose stamps were replaced by lines; 0 for other clocks. */
    double clockTick() const { return mTick; }

    double timeOf(size_t sample) const;
    size_t sampleCount() const { return mSegments.back().mLast + 1; }
    double begin() const { return mSegments.front().mStart; }
    double end() const { return mSegments.back().timeOf(mSegments.back().mLast); }

private:
    double mTick;
    std::vector<Segment> mSegments; ///< never empty
};

} // namespace resampling
