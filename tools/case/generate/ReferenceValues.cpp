#include "generate/ReferenceValues.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "SampleStep.h"
#include "base/Numbers.h"
#include "generate/ExponentialSum.h"

namespace generate {

namespace {
using Complex = std::complex<double>;

constexpr int kHalfPeriod = kSamplesPerPeriod / 2;

/** What the receiver of the time stamps sees of a frequency in the file. */
double playedHertz(float hertz)
{
    constexpr double kNanosecondsPerSecond = 1e9;
    return kNanosecondsPerSecond / (double(sampleStepOf(hertz)) * kSamplesPerPeriod);
}

/** Computes the values of one description, part by part. */
class ReferenceMeter
{
public:
    explicit ReferenceMeter(const WaveParameters& parameters)
        : mParameters(parameters), mTimeline(parameters)
    {
    }

    ReferenceValues measure() const;

private:
    Position positionOf(qint64 line) const;
    FrequencyValues frequency() const;
    FrequencyValues constantFrequency() const;
    FrequencyValues changingFrequency() const;
    std::vector<FrequencyStep> frequencySteps() const;
    std::optional<double> maxSlope() const;
    ChannelValues channel(size_t channel) const;
    void measureRms(size_t channel, ChannelValues& values) const;
    double distortion(size_t channel) const;
    std::vector<HarmonicValues> harmonics(size_t channel) const;
    std::optional<UnbalanceValues> unbalance() const;
    EventValues event(const Disturbance& disturbance) const;
    ToneValues tone(const Tone& tone) const;
    ModulationValues modulation(const Modulation& modulation) const;

    /** Otherwise a change may be so fast that it shows among the harmonics. */
    bool hasNoRectangle() const
    {
        return std::none_of(mParameters.mModulations.begin(), mParameters.mModulations.end(),
                            [](const Modulation& modulation) {
                                return modulation.mShape == ModulationShape::Rectangle;
                            });
    }

    /** Above 1, because the step between samples is truncated to whole nanoseconds. */
    double playbackSpeedRatio() const
    {
        return playedHertz(mParameters.mFrequency) / double(mParameters.mFrequency);
    }

    const WaveParameters& mParameters;
    Timeline mTimeline;
};

ReferenceValues ReferenceMeter::measure() const
{
    ReferenceValues values{};
    values.mEnd = positionOf(mTimeline.lineCount());
    values.mFrequency = frequency();
    values.mHasHarmonics = hasNoRectangle();
    values.mUnbalance = unbalance();
    for (size_t i = 0; i < kChannelCount; ++i) {
        values.mChannels[i] = channel(i);
    }
    for (const Disturbance& disturbance : mParameters.mDisturbances) {
        values.mEvents.push_back(event(disturbance));
    }
    for (const Tone& part : mParameters.mTones) {
        values.mTones.push_back(tone(part));
    }
    for (const Modulation& part : mParameters.mModulations) {
        values.mModulations.push_back(modulation(part));
    }
    return values;
}

/** The line behind the last one too. */
Position ReferenceMeter::positionOf(qint64 line) const
{
    const qint64 last = mTimeline.lineCount() - 1;
    const double step =
        double(sampleStepOf(mTimeline.frequencyOf(last))) * base::kSecondsPerNanosecond;
    return {line, line > last ? mTimeline.stampOf(last) + step : mTimeline.stampOf(line)};
}

FrequencyValues ReferenceMeter::frequency() const
{
    return mParameters.mCourse.empty() ? constantFrequency() : changingFrequency();
}

FrequencyValues ReferenceMeter::constantFrequency() const
{
    const double played = playedHertz(mParameters.mFrequency);
    double deviation = 0.0;
    double slope = 0.0;
    for (const Modulation& modulation : mParameters.mModulations) {
        if (modulation.mShape == ModulationShape::Sine) {
            const double hertz = modulation.mHertz * playbackSpeedRatio();
            deviation += std::abs(modulation.mPhaseDepth) * hertz;
            slope += std::abs(modulation.mPhaseDepth) * hertz * hertz * 2.0 * base::kPi;
        }
    }
    return {mParameters.mFrequency, played, played - deviation, played + deviation, slope, {}};
}

/** The file's frequency changes from period to period. */
FrequencyValues ReferenceMeter::changingFrequency() const
{
    FrequencyValues values{};
    values.mSteps = frequencySteps();
    const auto [min, max] =
        std::minmax_element(values.mSteps.begin(), values.mSteps.end(),
                            [](const auto& a, const auto& b) { return a.mHertz < b.mHertz; });
    values.mMinHertz = min->mHertz;
    values.mMaxHertz = max->mHertz;
    values.mMaxHertzPerSecond = maxSlope();
    return values;
}

/** The periods in which the course begins, bends and ends; those of a jump are one. */
std::vector<FrequencyStep> ReferenceMeter::frequencySteps() const
{
    std::vector<FrequencyStep> steps;
    const auto add = [this, &steps](qint64 line) {
        if (steps.empty() || steps.back().mPosition.mLine != line) {
            const float hertz = mTimeline.frequencyOf(line);
            steps.push_back({positionOf(line), hertz, playedHertz(hertz)});
        }
    };
    const qint64 last = mTimeline.lineCount() - kSamplesPerPeriod;
    add(0);
    for (const FrequencyPoint& point : mParameters.mCourse) {
        const qint64 period = mTimeline.lineAt(point.mSeconds) / kSamplesPerPeriod;
        add(std::min(period * kSamplesPerPeriod, last));
    }
    add(last);
    return steps;
}

std::optional<double> ReferenceMeter::maxSlope() const
{
    double slope = 0.0;
    for (size_t i = 1; i < mParameters.mCourse.size(); ++i) {
        const FrequencyPoint& from = mParameters.mCourse[i - 1];
        const FrequencyPoint& to = mParameters.mCourse[i];
        if (to.mSeconds > from.mSeconds) {
            slope = std::max(slope,
                             std::abs((to.mHertz - from.mHertz) / (to.mSeconds - from.mSeconds)));
        } else if (to.mHertz != from.mHertz) {
            return std::nullopt;
        }
    }
    return slope;
}

ChannelValues ReferenceMeter::channel(size_t channel) const
{
    const WaveChannel& wave = mParameters.mChannels[channel];
    ChannelValues values{};
    values.mFundamentalRms = std::abs(wave.mAmplitude) / std::sqrt(2.0);
    values.mFundamentalDegrees = wave.degrees();
    measureRms(channel, values);
    values.mThdPercent = distortion(channel);
    values.mHarmonics = harmonics(channel);
    return values;
}

double ReferenceMeter::distortion(size_t channel) const
{
    double squares = 0.0;
    for (const Harmonic& harmonic : mParameters.mHarmonics) {
        squares += harmonic.mChannels.test(channel) ? harmonic.mRatio * harmonic.mRatio : 0.0;
    }
    return std::sqrt(squares) * kPercent;
}

/**
 * The rms of one period, from each zero crossing of the channel's undisturbed wave on: renewed
 * each half period.
 */
void ReferenceMeter::measureRms(size_t channel, ChannelValues& values) const
{
    constexpr double kSame = 1e-5; // a tail of a decay is no extreme
    const ExponentialSum sum(mParameters, mTimeline, channel);
    const double phase = std::fmod(mParameters.mChannels[channel].mPhase, kHalfPeriod);
    const auto first = qint64(std::ceil(phase > 0.0 ? kHalfPeriod - phase : -phase));
    double rms = 0.0;
    bool wasSteady = false;
    for (qint64 line = first; line + kSamplesPerPeriod <= mTimeline.lineCount();
         line += kHalfPeriod) {
        // Two periods that overlap and are steady are alike.
        const bool isSteady = sum.isSteady(line, line + kSamplesPerPeriod);
        if (!isSteady || !wasSteady) {
            const double squares = sum.sumOfSquares(line, line + kSamplesPerPeriod);
            rms = std::sqrt(std::max(0.0, squares) / kSamplesPerPeriod);
        }
        wasSteady = isSteady;
        if (!values.mMinRms || rms < values.mMinRms->mRms * (1.0 - kSame)) {
            values.mMinRms = {rms, positionOf(line)};
        }
        if (!values.mMaxRms || rms > values.mMaxRms->mRms * (1.0 + kSame)) {
            values.mMaxRms = {rms, positionOf(line)};
        }
    }
}

std::vector<HarmonicValues> ReferenceMeter::harmonics(size_t channel) const
{
    std::vector<HarmonicValues> list;
    const bool isTurned = mParameters.mChannels[channel].mAmplitude < 0.0;
    for (const Harmonic& harmonic : mParameters.mHarmonics) {
        if (harmonic.mChannels.test(channel)) {
            // Half a turn of the fundamental is whole turns of an even order, which is turned too.
            const double turn = isTurned && harmonic.mOrder % 2 == 0 ? 180.0 : 0.0;
            list.push_back({harmonic.mOrder, harmonic.mRatio * kPercent, harmonic.mPhase + turn});
        }
    }
    return list;
}

/** Of the undisturbed voltages. */
std::optional<UnbalanceValues> ReferenceMeter::unbalance() const
{
    const Complex turn = std::polar(1.0, 2.0 * base::kPi / 3.0);
    std::array<Complex, 3> voltages;
    for (size_t i = 0; i < voltages.size(); ++i) {
        const WaveChannel& wave = mParameters.mChannels[i];
        voltages[i] = std::polar(1.0, wave.mPhase * base::kRadiansPerDegree) * wave.mAmplitude;
    }
    const auto& [a, b, c] = voltages;
    const double positive = std::abs(a + turn * b + turn * turn * c);
    if (positive == 0.0) {
        return std::nullopt;
    }
    return UnbalanceValues{std::abs(a + turn * turn * b + turn * c) / positive * kPercent,
                           std::abs(a + b + c) / positive * kPercent};
}

EventValues ReferenceMeter::event(const Disturbance& disturbance) const
{
    const qint64 begin = mTimeline.lineAt(disturbance.mStart);
    const qint64 end = std::min(mTimeline.lineAt(disturbance.mStart + disturbance.mDuration),
                                mTimeline.lineCount());
    EventKind kind = disturbance.mFactor < 1.0 ? EventKind::Dip : EventKind::Swell;
    kind = disturbance.mFactor == 1.0 ? EventKind::PhaseJump : kind;
    kind = end == mTimeline.lineCount() ? EventKind::Step : kind;
    return {kind,
            disturbance.mChannels,
            positionOf(begin),
            positionOf(end),
            disturbance.mFactor,
            disturbance.mPhaseJump};
}

ToneValues ReferenceMeter::tone(const Tone& tone) const
{
    std::optional<double> timeConstant;
    if (std::isfinite(tone.mTimeConstant)) {
        timeConstant = tone.mTimeConstant / playbackSpeedRatio();
    }
    return {tone.mChannels,
            positionOf(mTimeline.lineAt(tone.mStart)),
            tone.mHertz * playbackSpeedRatio(),
            tone.mRatio * kPercent,
            tone.mPhase,
            timeConstant};
}

ModulationValues ReferenceMeter::modulation(const Modulation& modulation) const
{
    return {modulation.mChannels, modulation.mShape, modulation.mHertz * playbackSpeedRatio(),
            modulation.mDepth * kPercent, modulation.mPhaseDepth};
}
} // namespace

ReferenceValues referenceValuesOf(const WaveParameters& parameters)
{
    return ReferenceMeter(parameters).measure();
}

} // namespace generate
