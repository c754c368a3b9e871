#pragma once

#include <vector>

#include "measure/PhaseClock.h"
#include "measure/SampleHistory.h"
#include "resampling/SincKernel.h"

namespace measure {

/** A period of the clock. */
struct ClockPeriod
{
    double mBegin = 0.0;      ///< s
    double mEnd = 0.0;        ///< s
    double mCycles = 0.0;     ///< by which the fundamental turned in it, about 1
    bool mIsMeasured = false; ///< all of it
};

/**
 * Samples with exactly 360 per period of the fundamental, whatever its duration. If the lines are
 * in step with the fundamental, these are the lines. Otherwise they are interpolated (band-limited)
 * from the first to the last measurement of the phase, so about a period is lost at either end.
 */
class PeriodGrid
{
public:
    PeriodGrid() : mKernel(1.0) {}

    void add(const waveform::SignalBlock& lines);

    /** To be called after the last line. */
    void finish();

    /** All samples so far, from index 0 on; the caller drops those that it has taken. */
    SampleHistory& samples() { return mGrid; }

    /** The periods that have ended since the last call. */
    std::vector<ClockPeriod> takePeriods();

private:
    /** The clock between two hops: a cubic polynomial through points and slopes. */
    struct Arc
    {
        double mBegin; ///< cycles, as the next three
        double mEnd;
        double mBeginSlope; ///< a hop
        double mEndSlope;

        double cyclesAt(double x) const;
        double slopeAt(double x) const;
    };

    void pull();
    void makeInterval();
    void copyLines(size_t first);
    void resample(size_t first, const Arc& arc);
    void addSample(double line);
    void addToPeriods(size_t first, const Arc& arc, const ClockPoint& end);
    double nextCycles() const;

    PhaseClock mClock;
    SampleHistory mLines;
    SampleHistory mGrid;
    resampling::SincKernel mKernel;
    std::vector<double> mWeights;
    std::vector<ClockPoint> mPoints; ///< two before the interval's end, and what follows
    size_t mInterval = 0;            ///< next one to be made: from that hop to the next
    bool mIsFinished = false;
    bool mHasStarted = false;
    double mFirstCycles = 0.0; ///< of the clock at the first sample
    ClockPeriod mPeriod;       ///< not ended yet
    bool mHasPeriod = false;
    std::vector<ClockPeriod> mPeriods;
};

} // namespace measure
