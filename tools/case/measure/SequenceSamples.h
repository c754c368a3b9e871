#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "base/Numbers.h"
#include "waveform/SignalSource.h"

namespace measure {

/** The rotating phasor that the phase is taken from. */
enum class PhaseReference
{
    Voltages,
    ReversedVoltages, ///< the phases are in the order A, C, B
    Currents,
    ReversedCurrents
};

inline constexpr std::array<PhaseReference, 4> kPhaseReferences{
    PhaseReference::Voltages, PhaseReference::ReversedVoltages, PhaseReference::Currents,
    PhaseReference::ReversedCurrents};

/**
 * The positive sequences of voltages and currents, line by line, as far back as they are needed,
 * and their phase around a line. The window is a raised cosine of two periods. At the frequency of
 * the signal it rejects DC, harmonics and the image of an unbalanced system.
 */
class SequenceSamples
{
public:
    struct Phasor
    {
        double mAmplitude;
        double mCycles; ///< at the middle line, -0.5 to 0.5
        double mShare;  ///< of the power that is in it, 0 to 1
    };

    void append(const waveform::SignalBlock& block);

    /** Drops the lines before this one. */
    void dropBefore(size_t line);

    size_t end() const { return mFirst + mSequences[0].mReal.size(); }

    /** Whether the window lies within the lines. */
    bool covers(size_t middle, double cyclesPerLine) const;

    /** Requires: covers(). */
    Phasor measure(PhaseReference reference, size_t middle, double cyclesPerLine);

private:
    struct Sequence
    {
        std::vector<double> mReal;
        std::vector<double> mImaginary;
    };

    void prepareWeights(double cyclesPerLine);

    size_t mFirst = 0;                  ///< line of the first that is kept
    std::array<Sequence, 2> mSequences; ///< of the voltages and the currents
    double mCyclesPerLine = 0.0;        ///< of the weights
    size_t mWindowLength = 0;
    std::vector<double> mWindow;
    std::vector<double> mCos; ///< of the window and the rotation
    std::vector<double> mSin;
    double mWindowSum = 0.0;
};

} // namespace measure
