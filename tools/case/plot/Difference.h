#pragma once

#include <array>
#include <deque>
#include <vector>

#include "plot/DrawnChannels.h"
#include "plot/Envelope.h"
#include "plot/WaveformWindows.h"

namespace plot {

/**
 * The difference of two signals, sample by sample, if their instants are equal. Compares from the
 * beginning of the later one to the end of the earlier one, while both are read.
 */
class Difference
{
public:
    /**
     * Compares channels of the same conductor, in groups of the same quantity.
     *
     * @param columns width of the picture
     */
    Difference(const DrawnChannels& left, const DrawnChannels& right, size_t columns);

    /**
     * Takes the next block of a signal: 0 is the left one, 1 the right one. Keeps the blocks by
     * which one signal is ahead of the other.
     */
    void add(size_t side, const SharedBlock& block);

    /** To be called when one of them has ended. */
    void finish();

    /** Whether there were instants and all were equal within 1 µs; otherwise nothing is known. */
    bool isKnown() const { return mAreInstantsEqual && mSamples > 0; }

    struct Largest
    {
        double mValue = 0.0; ///< without sign, in the unit of the group
        double mSeconds = 0.0;
    };

    /** Number of channels of a group of the left signal that both signals have. */
    size_t channels(size_t group) const { return mPairs[group].size(); }
    const DrawnChannel& channel(size_t group, size_t channel) const
    {
        return mPairs[group][channel].mLeft;
    }

    const Largest& largest(size_t group) const { return mLargest[group]; }
    std::vector<Point> curve(size_t group, size_t channel) const
    {
        return mCurves[group].curve(channel);
    }

private:
    struct Pair
    {
        DrawnChannel mLeft;
        DrawnChannel mRight;
    };

    /** The part of a signal that is not compared yet. */
    struct Side
    {
        std::deque<SharedBlock> mBlocks;
        size_t mNext = 0; ///< in the first block

        const waveform::SignalBlock& block() const { return *mBlocks.front(); }
        size_t left() const { return mBlocks.empty() ? 0 : block().size() - mNext; }
        void advance(size_t samples);

        /** Skips the samples before this time. */
        void skipTo(double seconds);
    };

    static std::vector<Pair> pairsOf(const DrawnGroup& left, const DrawnGroup& right);
    void align();
    bool compare(size_t count);

    std::vector<std::vector<Pair>> mPairs; ///< of each group
    std::vector<Envelope> mCurves;
    std::vector<Largest> mLargest;
    std::vector<double> mValues; ///< of one sample
    std::array<Side, 2> mSides;
    bool mIsAligned = false;
    bool mIsOver = false;
    bool mAreInstantsEqual = true;
    size_t mSamples = 0;
};

} // namespace plot
