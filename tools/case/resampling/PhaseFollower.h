#pragma once

#include <optional>
#include <vector>

#include "resampling/PhaseMeter.h"
#include "resampling/PhaseTrack.h"

namespace resampling {

/**
 * Follows the phase of a fundamental over a recording.
 *
 * It measures every half period. A run of measurements in which the phase rises evenly is trusted.
 * A fault ends the run: the step of the phase changes by more than 0.6 degrees, or the amplitude
 * falls below half. From there the phase is extrapolated with the frequency of the ten periods
 * before and its rate of change, until the next run has settled. The phase jump between both runs
 * is left out of the track, so it stays in the samples. A deep sag that lasts longer than 50
 * periods becomes the new reference.
 */
class PhaseFollower
{
public:
    /** Borrows the meter. @param nominalHz above 0; frequencies within 25 % of it are followed */
    PhaseFollower(const PhaseMeter& meter, double nominalHz);

    /**
     * May be called once.
     * @return no value if no run of a few periods could be trusted
     */
    std::optional<PhaseTrack> follow();

private:
    struct Point
    {
        size_t mHop; ///< index of the measurement
        double mCycles;
        double mAmplitude;
    };
    using Points = std::vector<Point>;

    /** The extrapolation of the phase. */
    struct Model
    {
        size_t mHop;    ///< of the anchor
        double mCycles; ///< at the anchor
        double mSlope;  ///< cycles per hop at the anchor
        double mBend;   ///< change of the slope per hop

        double cyclesAt(size_t hop) const;
    };

    double secondsOf(size_t hop) const;
    void take(size_t hop);
    bool continuesRun(const Point& point) const;
    bool isDeepSag(double amplitude) const;
    void adopt(const Point& point);
    bool isSettled() const;
    void trustRun();
    void endRun();
    void keep(size_t count);
    void fill(const Model& model, size_t from, size_t to);
    void complete();
    Model fittedTo(const Points& points, size_t anchor) const;

    const PhaseMeter& mMeter;
    double mNominalHz;
    double mHopSeconds;
    double mFrequency;       ///< Hz, for the next measurement
    double mReference = 0.0; ///< amplitude before the last fault
    Points mRun;             ///< consecutive hops
    double mOffset = 0.0;    ///< cycles from the run's phase to the track's
    bool mIsTrusted = false; ///< the run
    bool mHasMeasured = false;
    bool mIsAfterBreak = false; ///< its first windows may contain the disturbance before
    Points mFirstPoints;        ///< of the first run that was trusted
    std::optional<Model> mModel;
    std::vector<double> mCycles; ///< the track, a hop each
    std::vector<PhaseTrack::Gap> mGaps;
};

} // namespace resampling
