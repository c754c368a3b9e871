#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "plot/Envelope.h"
#include "waveform/SignalSource.h"

namespace plot {

/** A time range in s. */
struct Span
{
    double mFrom;
    double mTo;

    bool operator==(const Span& other) const { return mFrom == other.mFrom && mTo == other.mTo; }
};

/** A shared block, which is not changed any more. */
using SharedBlock = std::shared_ptr<const waveform::SignalBlock>;

/**
 * The samples of some parts of a signal, no denser than the picture, collected in one pass. The
 * parts become known only later, so the latest blocks are kept until they are released by
 * forgetBefore().
 */
class WaveformWindows
{
public:
    explicit WaveformWindows(size_t curves) : mCurves(curves), mValues(curves) {}

    /** Takes the next block of a signal, as drawnBlock() makes it. */
    void add(const SharedBlock& block);

    /**
     * Sets the spans to keep from now on. A new one begins with the samples that are still kept;
     * others are dropped.
     *
     * @param columns width of a window in the picture, which limits the density of its samples
     */
    void open(const std::vector<Span>& spans, size_t columns);

    /** Announces that no window will be opened that begins before this time. */
    void forgetBefore(double seconds);

    /**
     * The samples of a curve.
     *
     * @param columns width of the window in the picture
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
