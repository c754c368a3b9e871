#pragma once

#include <array>
#include <complex>
#include <vector>

#include "waveform/SignalSource.h"

namespace waveform {

/**
 * Measures the frequency of the fundamental of one or several channels while a signal is read, in
 * memory that does not depend on its length.
 *
 * Each channel is compared with a phasor that rotates at a frequency near its own, in windows of
 * two of the phasor's periods which overlap by one: how far the phase turns from window to window
 * is the difference of the frequencies. The median over time is taken, so that a fault, with its
 * jumps of the phase, does not count.
 */
class FrequencyMeter
{
public:
    struct Result
    {
        double mHertz = 0.0;
        /** How much of the channel's power is in the fundamental, about 0 to 1. */
        double mShare = 0.0;
    };

    /**
     * @param nearHertz about the frequency, above 0: half of it to one and a half are measured
     * @param channels how many are looked at, from the first on
     */
    FrequencyMeter(double nearHertz, size_t channels);

    void add(const SignalBlock& block);

    /** Of the channel in which the fundamental is purest; all 0 where nothing was measured. */
    Result result() const;

private:
    /** Steps of the angle in which the turns are counted for the median: 1.4 degrees each. */
    static constexpr size_t kTurns = 256;

    using Phasor = std::complex<double>;

    struct Channel
    {
        Phasor mEnding;        ///< of the window that the samples are in the second half of
        Phasor mBeginning;     ///< of the one they are in the first half of
        Phasor mLast;          ///< of the last whole window
        double mSquares = 0.0; ///< sum of them
        std::array<Phasor, kTurns> mTurns{}; ///< sums, by the angle
    };

    /** The phasor at each sample of a block, weighted for the window that ends and the next. */
    struct Weights
    {
        std::vector<double> mFallingCos;
        std::vector<double> mFallingSin;
        std::vector<double> mRisingCos;
        std::vector<double> mRisingSin;

        void resize(size_t samples);
    };

    static size_t stepOf(const Phasor& turn);
    static Phasor turnsAroundMedian(const Channel& channel);
    void rotatePhasor(const SignalBlock& block);
    void enterPeriod(double period);
    void addSpan(const SignalBlock& block, size_t begin, size_t end);
    Result resultOf(const Channel& channel) const;

    double mNearHertz;
    std::vector<Channel> mChannels;
    Weights mWeights;
    std::vector<double> mPeriods; ///< of a block: number of the period of each sample
    double mPeriod = -1.0;        ///< that the samples are in
    size_t mInPeriod = 0;         ///< samples in it so far
    size_t mInLast = 0;           ///< in the one before it
    size_t mPeriodsInRow = 0;     ///< whole ones before it, of one rate
    size_t mSamples = 0;
    size_t mTurnCount = 0;
    size_t mTurnSamples = 0; ///< in a period for each of them
};

} // namespace waveform
