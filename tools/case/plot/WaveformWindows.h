#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "plot/Envelope.h"
#include "waveform/SignalSource.h"

namespace plot {

/** A part of the time, in s. */
struct Span
{
    double mFrom;
    double mTo;

    bool operator==(const Span& other) const { return mFrom == other.mFrom && mTo == other.mTo; }
};

/** A block that is shared, and not changed any more. */
using SharedBlock = std::shared_ptr<const waveform::SignalBlock>;

/**
 * The samples of some parts of a signal, no denser than the picture, while the signal is read once.
 * What will be looked at shows only later; so the latest blocks are kept until they are forgotten.
 */
class WaveformWindows
{
public:
    explicit WaveformWindows(size_t curves) : mCurves(curves), mValues(curves) {}

    /** Takes the next block of a signal, as drawnBlock() makes it. */
    void add(const SharedBlock& block);

    /**
     * The spans that are to be kept from now on. A new one begins with what is not forgotten yet;
     * others are dropped.
     *
     * @param columns that a window is wide in the picture: its samples are no denser from now on
     */
    void open(const std::vector<Span>& spans, size_t columns);

    /** No window will be opened that begins before this time. */
    void forgetBefore(double seconds);

    /**
     * The samples of a curve.
     *
     * @param columns that the window is wide in the picture
     * Requires: the span is among those that were opened last.
     */
    std::vector<Point> curve(const Span& span, size_t curve, size_t columns) const;

private:
    struct Window
    {
        Span mSpan;
        Envelope mSamples;
    };

    void addBlock(const waveform::SignalBlock& block, Window* window);

    size_t mCurves;
    std::vector<Window> mWindows;
    std::deque<SharedBlock> mLatest;
    std::vector<double> mValues; ///< of one sample
};

} // namespace plot
