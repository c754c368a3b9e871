#pragma once

#include <cstddef>
#include <vector>

namespace resampling {

/**
 * The weights of a band-limited interpolation: a tabulated sinc with a Kaiser window.
 *
 * For a source that is not faster than the output, the sinc is that of the source: it is cut off at
 * half the source's rate, and samples are unchanged at their own instants. For a faster source it
 * is wider, so that nothing above half the output's rate remains. The pass band is 0.41 of the
 * slower rate; the stop band is 110 dB down.
 */
class SincKernel
{
public:
    /** @param ratio of the output's rate to the source's; 1 if the source is not faster */
    explicit SincKernel(double ratio);

    /** Number of samples with a weight on either side of an instant. */
    size_t halfWidth() const { return mHalfWidth; }

    /**
     * The weights of 2 * halfWidth() samples for an instant between the two in the middle.
     * @param fraction distance from the first of these two in source steps, 0 to below 1
     */
    void weightsAt(double fraction, std::vector<double>& weights) const;

private:
    size_t mHalfWidth;
    size_t mRows; ///< steps between the fractions in the table
    std::vector<double> mTable;
};

} // namespace resampling
