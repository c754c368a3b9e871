#pragma once

#include <complex>
#include <vector>

#include "waveform/SignalSource.h"

namespace waveform {

/**
 * Measures the frequency of the fundamental of one or more channels while a signal is read, in
 * constant memory.
 *
 * Each channel is compared with a phasor that rotates at a frequency near its own, in windows of
 * two of the phasor's periods that overlap by one: the turn of the phase from window to window is
 * the difference of the frequencies. Windows with the same amplitude and turn as the window before
 * form a steady run, which a fault ends. The run with the most precise frequency counts: a long one
 * whose turns scatter little.
 */
class FrequencyMeter
{
public:
    struct Result
    {
        double mHertz = 0.0; ///< 0 if nothing steady was found
        /** Part of the channel's power in the fundamental, about 0 to 1. */
        double mShare = 0.0;
        double mError = 0.0; ///< estimated, in Hz
        double mFrom = 0.0;  ///< s; the steady range that was measured
        double mTo = 0.0;
    };

    /**
     * @param nearHertz approximate frequency, above 0: half of it to one and a half are measured
     * @param channels number of channels, from the first on
     */
    FrequencyMeter(double nearHertz, size_t channels);

    void add(const SignalBlock& block);

    /** Of the channel with the best result; all 0 if nothing was measured. */
    Result result() const;

    /** The result with the clearly purer fundamental, or else the one with the smaller error. */
    static Result betterOf(const Result& a, const Result& b);

private:
    using Phasor = std::complex<double>;

    /** Consecutive windows in which a channel is steady. */
    struct Run
    {
        size_t mTurns = 0;
        double mFirstPeriod = 0.0; ///< in which the first turn was known
        double mLastPeriod = 0.0;
        double mFirstTurn = 0.0; ///< radians
        double mLastTurn = 0.0;
        double mSum = 0.0; ///< of the turns less the first one
        double mSumOfSquares = 0.0;
        double mAmplitudes = 0.0; ///< sum of those of the windows
        double mSquares = 0.0;    ///< sum of those of the samples
        size_t mSamples = 0;
    };

    struct Channel
    {
        Phasor mEnding;        ///< of the window whose second half is being read
        Phasor mBeginning;     ///< of the window whose first half is being read
        Phasor mLast;          ///< of the last whole window
        double mSquares = 0.0; ///< sum of those of the samples in the period
        double mChange = 0.0;  ///< approximate median change from turn to turn so far, in radians
        Run mRun;              ///< the current one
        Result mBest;          ///< of the runs that have ended
    };

    /** The phasor at each sample of a block, weighted for the ending and the next window. */
    struct Weights
    {
        std::vector<double> mFallingCos;
        std::vector<double> mFallingSin;
        std::vector<double> mRisingCos;
        std::vector<double> mRisingSin;

        void resize(size_t samples);
    };

    void rotatePhasor(const SignalBlock& block);
    void enterPeriod(double period);
    void extendRun(Channel* channel) const;
    void addSpan(const SignalBlock& block, size_t begin, size_t end);
    Result resultOf(const Run& run) const;

    double mNearHertz;
    std::vector<Channel> mChannels;
    Weights mWeights;
    std::vector<double> mPeriods; ///< of a block: number of the period of each sample
    double mPeriod = -1.0;        ///< the current one
    size_t mInPeriod = 0;         ///< samples in the current period so far
    size_t mInLast = 0;           ///< samples in the period before
    size_t mPeriodsInRow = 0;     ///< whole periods before it with one rate
};

} // namespace waveform
