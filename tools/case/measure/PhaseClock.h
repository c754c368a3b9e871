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
    double mCycles = 0.0; ///< of the clock; never jumps
    double mTurn = 0.0;   ///< by how much the fundamental turned since the hop before, in cycles
    bool mIsMeasured = false; ///< the turn is; else it is extrapolated
    bool mIsOnLines = false;  ///< since the hop before, 360 lines are a period of the clock
    bool mIsBeyond = false;   ///< after the last measurement, where the signal ends
};

/**
 * A clock that counts the periods of the fundamental, from lines of which 360 are about a period.
 *
 * Every half period the phase of the positive sequence is measured. Where it turns evenly the clock
 * follows it. A fault ends that: the turn changes by more than a degree from one hop to the next,
 * or the amplitude by more than modulation can. From there the clock goes on at the frequency from
 * before, until six measurements in a row are even again. What the phase has jumped by then is left
 * out, so that periods have their true length again right after the fault.
 *
 * Where the lines keep to the fundamental the clock keeps to the lines, exactly.
 */
class PhaseClock
{
public:
    PhaseClock();

    void add(const waveform::SignalBlock& block);

    /** No line follows: the last points are extrapolated. */
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
    void lose();
    void search(SequenceSamples::Phasor phasor);
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
