#pragma once

#include <vector>

#include "plot/DrawnChannels.h"
#include "plot/Envelope.h"

namespace plot {

/** How two signals differ, sample by sample, where their instants are the same. */
class Difference
{
public:
    /**
     * The channels at the same place of groups alike are compared.
     * @param columns that the picture is wide
     */
    Difference(const DrawnChannels& left, const DrawnChannels& right, size_t columns);

    /**
     * Reads both signals from where the later one begins up to where the earlier one ends.
     * @return whether all instants in there are the same, to a µs; if not, nothing is known
     */
    bool read(waveform::SignalSource& left, waveform::SignalSource& right);

    struct Largest
    {
        double mValue = 0.0; ///< without sign, in the unit of the group
        double mSeconds = 0.0;
    };

    /** Channels that both have, of a group of the left signal. */
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

    /** That were compared. */
    size_t samples() const { return mSamples; }

private:
    struct Pair
    {
        DrawnChannel mLeft;
        DrawnChannel mRight;
    };

    struct Reader
    {
        waveform::SignalSource& mSource;
        waveform::SignalBlock mBlock{};
        size_t mNext = 0;

        bool hasSample();
        double seconds() const { return mBlock.mSeconds[mNext]; }

        /** Leaves out what is before that time. */
        void skipTo(double begin);
    };

    static std::vector<Pair> pairsOf(const DrawnGroup& left, const DrawnGroup& right);
    bool compare(const Reader& left, const Reader& right, size_t count);

    std::vector<std::vector<Pair>> mPairs; ///< of each group
    std::vector<Envelope> mCurves;
    std::vector<Largest> mLargest;
    std::vector<double> mValues;
    size_t mSamples = 0;
};

} // namespace plot
