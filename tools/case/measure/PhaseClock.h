#pragma once

#include <deque>
#include <optional>
#include <vector>

#include "measure/SequenceSamples.h"

namespace measure {

/** The phase of the fundamental is measured every half period of lines. */
inline constexpr size_t kHopLines = 180;

/** The clock at one hop: at line 180 h. */
struct ClockPoint
{
    double mCycles = 0.0;     ///< of the clock; never jumps
    double mTurn = 0.0;       ///< rotation of the fundamental since the previous hop, in cycles
    bool mIsMeasured = false; ///< the turn is measured, not extrapolated
    bool mIsOnLines = false;  ///< since the previous hop, 360 lines are a period of the clock
    bool mIsBeyond = false;   ///< after the last measurement, where the signal ends
};

/**
 * A clock that counts the periods of the fundamental. Its input is lines, with about 360 per
 * period.
 *
 * Every half period it measures the phase of the positive sequence, and follows it while it turns
 * evenly. A fault stops the tracking: the turn changes by more than a degree from one hop to the
 * next, or the amplitude by more than modulation can. Then the clock continues at the previous
 * frequency until six measurements in a row are consistent. The phase jump in between is left out,
 * so that periods have their true length right after the fault.
 *
 * If the lines are in step with the fundamental, the clock keeps exactly to the lines.
 */
class PhaseClock
{
public:
    PhaseClock();

    void add(const waveform::SignalBlock& block);

    /** Extrapolates the last points; to be called after the last line. */
    void finish();

    /** The point of the next hop, from hop 0 on, if it is known. */
    std::optional<ClockPoint> take();

private:
    /** A measurement, in a row of even ones. */
    struct HopMeasurement
    {
        size_t mHop;
        double mCycles; ///< rises from one to the next
        double mAmplitude;
    };

    void measureHop();
    bool followOn(const SequenceSamples::Phasor& phasor);
    void beginFault();
    void searchFundamental(SequenceSamples::Phasor phasor);
    void extendRun(const SequenceSamples::Phasor& phasor);
    void resume();
    void refineRun();
    void refine(size_t index, const HopMeasurement& before, const HopMeasurement& after);
    void begin();
    void pushExtrapolated();
    void pushMeasured(double turn);
    bool isLeavingLines();
    bool chooseReference();
    double windowFrequency() const;
    bool isRunOnLines();

    SequenceSamples mSamples;
    PhaseReference mReference = PhaseReference::Voltages;
    std::deque<ClockPoint> mPoints; ///< not taken yet, and the few before them
    size_t mTaken = 0;              ///< how many of mPoints
    size_t mNextHop = 0;            ///< to be measured
    bool mHasBegun = false;         ///< the fundamental was found once
    bool mIsFollowing = false;
    bool mIsOnLines = true;
    bool mIsFinished = false;
    double mTurn;             ///< last one, or that of the extrapolation
    double mTurnChange = 0.0; ///< in the last hop
    double mCycles = 0.0;     ///< last that was measured
    double mAmplitude = 0.0;
    double mGrowth = 0.0; ///< of the amplitude, in the last hop
    std::vector<HopMeasurement> mRun;
    std::deque<double> mDrift; ///< of the phase against the lines, the last hops
    size_t mDrifting = 0;      ///< hops in a row with too much of it
};

} // namespace measure
