#pragma once

#include <cstddef>
#include <vector>

namespace resampling {

/**
 * The weights of a band-limited interpolation: a sinc under a Kaiser window, tabulated.
 *
 * For a source that is slower than the output, or as fast, the sinc is that of the source: it
 * is cut off at half the source's rate, and a sample passes as it is where the instants coincide.
 * For a faster source it is wider, so that nothing above half the output's rate is left. Up to
 * 0.41 of the slower rate everything passes; what is removed is 110 dB down.
 */
class SincKernel
{
public:
    /** @param ratio of the output's rate to the source's; 1 where the source is not faster */
    explicit SincKernel(double ratio);

    /** How many samples on either side of an instant have a weight. */
    size_t halfWidth() const { return mHalfWidth; }

    /**
     * The weights of 2 * halfWidth() samples for an instant between the two in the middle.
     * @param fraction how far after the first of these two, in source steps, 0 to below 1
     */
    void weightsAt(double fraction, std::vector<double>& weights) const;

private:
    size_t mHalfWidth;
    size_t mRows; ///< steps between the fractions in the table
    std::vector<double> mTable;
};

} // namespace resampling
