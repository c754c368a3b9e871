#pragma once

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

namespace measure {

/** The performance classes of IEC/IEEE 60255-118-1: fast response, and rejection of aliases. */
enum class PhasorClass
{
    P,
    M,
};

/**
 * The low-pass filter of a phasor: its weights around the instant of a frame, as in the reference
 * models of IEC/IEEE 60255-118-1. It is symmetric, so it adds no delay to the time stamps. A frame
 * needs samples up to halfWidth() after its instant.
 *
 * - Class P: a triangle over two nominal periods.
 * - Class M: a sinc under a Hamming window; frequency and length by the reporting rate.
 */
class PhasorWindow
{
public:
    static constexpr int kMaxRate = 1000; ///< frames a second

    /** Requires: problemOf() is empty. */
    PhasorWindow(PhasorClass phasorClass, int framesPerSecond, double nominalHz);

    /** Empty if the class has a window for the rate; otherwise what is wrong with the rate. */
    static std::string problemOf(PhasorClass phasorClass, int framesPerSecond, double nominalHz);

    /** s from the middle to either end. */
    double halfWidth() const { return mHalfWidth; }

    /** s: the step of the reference model, over which the phase is differentiated. */
    double step() const { return mStep; }

    /** @param seconds from the middle; 1 there, 0 beyond the ends */
    double at(double seconds) const
    {
        const double position = std::abs(seconds) * mRowsPerSecond;
        const auto row = static_cast<size_t>(position);
        if (row >= kRows) {
            return 0.0;
        }
        const double fraction = position - static_cast<double>(row);
        return mTable[row] + fraction * (mTable[row + 1] - mTable[row]);
    }

private:
    static constexpr size_t kRows = 4096;

    double mHalfWidth;
    double mStep;
    double mRowsPerSecond;
    std::vector<double> mTable; ///< from the middle to the end
};

} // namespace measure
