#pragma once

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
 * is the difference of the frequencies. Windows whose amplitude and turn are those of the window
 * before form a steady run, which a fault ends. The run that knows the
 * frequency best counts: a long one whose turns scatter little.
 */
class FrequencyMeter
{
public:
    struct Result
    {
        double mHertz = 0.0; ///< 0 where nothing steady was found
        /** How much of the channel's power is in the fundamental, about 0 to 1. */
        double mShare = 0.0;
        double mError = 0.0; ///< as estimated, in Hz
        double mFrom = 0.0;  ///< s, where the signal was steady and has been measured
        double mTo = 0.0;
    };

    /**
     * @param nearHertz about the frequency, above 0: half of it to one and a half are measured
     * @param channels how many are looked at, from the first on
     */
    FrequencyMeter(double nearHertz, size_t channels);

    void add(const SignalBlock& block);

    /** Of the channel that knows it best; all 0 where nothing was measured. */
    Result result() const;

    /** The one with the purer fundamental where that is clear, else with the smaller error. */
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
        Phasor mEnding;        ///< of the window that the samples are in the second half of
        Phasor mBeginning;     ///< of the one they are in the first half of
        Phasor mLast;          ///< of the last whole window
        double mSquares = 0.0; ///< sum of those of the samples in the period
        double mChange = 0.0;  ///< from turn to turn, about the median of it so far, in radians
        Run mRun;              ///< that has not ended
        Result mBest;          ///< of the runs that have ended
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

    void rotatePhasor(const SignalBlock& block);
    void enterPeriod(double period);
    void extendRun(Channel* channel) const;
    void addSpan(const SignalBlock& block, size_t begin, size_t end);
    Result resultOf(const Run& run) const;

    double mNearHertz;
    std::vector<Channel> mChannels;
    Weights mWeights;
    std::vector<double> mPeriods; ///< of a block: number of the period of each sample
    double mPeriod = -1.0;        ///< that the samples are in
    size_t mInPeriod = 0;         ///< samples in it so far
    size_t mInLast = 0;           ///< in the one before it
    size_t mPeriodsInRow = 0;     ///< whole ones before it, of one rate
};

} // namespace waveform
