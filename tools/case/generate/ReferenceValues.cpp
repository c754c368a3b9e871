#include "generate/ReferenceValues.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <map>

#include "base/Numbers.h"

namespace generate {

namespace {
using Complex = std::complex<double>;

/** The angle in the range above -180 up to 180 degrees. */
double normalizedDegrees(double degrees)
{
    return degreesOf(std::polar(1.0, degrees * base::kRadiansPerDegree));
}

/** The peak phasors of a channel at the first line, by order. */
struct Spectrum
{
    std::map<int, Complex> mPhasors;

    friend Spectrum operator+(Spectrum a, const Spectrum& b)
    {
        for (const auto& [order, phasor] : b.mPhasors) {
            a.mPhasors[order] += phasor;
        }
        return a;
    }
};

using Spectra = std::array<Spectrum, kChannelCount>;

Spectra spectraOf(const WaveParameters& parameters)
{
    Spectra spectra;
    for (size_t i = 0; i < spectra.size(); ++i) {
        const auto& [amplitude, phase] = parameters.mChannels[i];
        spectra[i].mPhasors[1] =
            amplitude * std::polar(1.0, std::fmod(phase, 360.0) * base::kRadiansPerDegree);
        for (const Harmonic& harmonic : parameters.mHarmonics) {
            if (harmonic.mChannels.test(i)) {
                const double degrees = std::fmod(harmonic.mOrder * phase + harmonic.mPhase, 360.0);
                spectra[i].mPhasors[harmonic.mOrder] +=
                    amplitude * harmonic.mRatio *
                    std::polar(1.0, degrees * base::kRadiansPerDegree);
            }
        }
    }
    parameters.mNeutral.applyTo(spectra);
    return spectra;
}

ChannelValues valuesOf(Spectrum spectrum)
{
    const Complex fundamental = spectrum.mPhasors[1];
    const bool hasFundamental = !isNegligible(fundamental);
    ChannelValues values{hasFundamental ? std::abs(fundamental) / std::sqrt(2.0) : 0.0,
                         degreesOf(fundamental),
                         {},
                         {}};
    double squares = 0.0;
    for (const auto& [order, phasor] : spectrum.mPhasors) {
        if (order == 1 || isNegligible(phasor)) {
            continue;
        }
        HarmonicValues harmonic{
            order, std::abs(phasor) / std::sqrt(2.0), {}, {}, degreesOf(phasor)};
        if (hasFundamental) {
            const double ratio = std::abs(phasor) / std::abs(fundamental);
            harmonic.mPercent = ratio * kPercent;
            harmonic.mDegrees =
                normalizedDegrees(harmonic.mFirstLineDegrees - order * values.mFundamentalDegrees);
            squares += ratio * ratio;
        }
        values.mHarmonics.push_back(harmonic);
    }
    if (hasFundamental) {
        values.mThdPercent = std::sqrt(squares) * kPercent;
    }
    return values;
}

/** Computes the reference values of one description. */
class ReferenceMeter
{
public:
    explicit ReferenceMeter(const WaveParameters& parameters)
        : mParameters(parameters), mTimeline(parameters)
    {
    }

    ReferenceValues measure() const;

private:
    FrequencyValues frequency() const;
    FrequencyValues constantFrequency() const;
    FrequencyValues changingFrequency() const;
    std::vector<FrequencyStep> frequencySteps() const;
    std::optional<double> maxSlope() const;
    std::optional<UnbalanceValues> unbalance() const;
    DisturbanceValues disturbance(const Disturbance& disturbance) const;
    ToneValues tone(const Tone& tone) const;
    ModulationValues modulation(const Modulation& modulation) const;

    /** A rectangular modulation changes so fast that it would show among the harmonics. */
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
    values.mEnd = mTimeline.positionOf(mTimeline.lineCount());
    values.mFrequency = frequency();
    values.mHasHarmonics = hasNoRectangle();
    values.mUnbalance = unbalance();
    const Spectra spectra = spectraOf(mParameters);
    std::transform(spectra.begin(), spectra.end(), values.mChannels.begin(), valuesOf);
    for (const Disturbance& part : mParameters.mDisturbances) {
        values.mDisturbances.push_back(disturbance(part));
    }
    for (const Tone& part : mParameters.mTones) {
        values.mTones.push_back(tone(part));
    }
    for (const Modulation& part : mParameters.mModulations) {
        values.mModulations.push_back(modulation(part));
    }
    return values;
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
    for (const Modulation& each : mParameters.mModulations) {
        if (each.mShape == ModulationShape::Sine) {
            const double hertz = each.mHertz * playbackSpeedRatio();
            deviation += std::abs(each.mPhaseDepth) * hertz;
            slope += std::abs(each.mPhaseDepth) * hertz * hertz * 2.0 * base::kPi;
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

/** The periods at which the course begins, bends and ends; a jump has one. */
std::vector<FrequencyStep> ReferenceMeter::frequencySteps() const
{
    std::vector<FrequencyStep> steps;
    const auto add = [this, &steps](qint64 line) {
        if (steps.empty() || steps.back().mPosition.mLine != line) {
            const float hertz = mTimeline.frequencyOf(line);
            steps.push_back({mTimeline.positionOf(line), hertz, playedHertz(hertz)});
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

/** The unbalance of the undisturbed voltages. */
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

DisturbanceValues ReferenceMeter::disturbance(const Disturbance& disturbance) const
{
    const qint64 begin = mTimeline.lineAt(disturbance.mStart);
    const qint64 end = mTimeline.lineAt(disturbance.mStart + disturbance.mDuration);
    return {disturbance.mChannels, mTimeline.positionOf(begin),
            mTimeline.positionOf(std::min(end, mTimeline.lineCount())), disturbance.mFactor,
            disturbance.mPhaseJump};
}

ToneValues ReferenceMeter::tone(const Tone& tone) const
{
    std::optional<double> timeConstant;
    if (std::isfinite(tone.mTimeConstant)) {
        timeConstant = tone.mTimeConstant / playbackSpeedRatio();
    }
    return {tone.mChannels,
            mTimeline.positionOf(mTimeline.lineAt(tone.mStart)),
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

bool isNegligible(std::complex<double> phasor)
{
    constexpr double kMaxRemainder = 1e-6;
    return std::abs(phasor) <= kMaxRemainder;
}

double degreesOf(std::complex<double> phasor)
{
    if (isNegligible(phasor)) {
        return 0.0;
    }
    constexpr double kDecimals = 1e9;
    const double degrees =
        std::round(std::arg(phasor) / base::kRadiansPerDegree * kDecimals) / kDecimals;
    return degrees <= -180.0 ? degrees + 360.0 : degrees;
}

SampleMeter sampleMeterFor(const ReferenceValues& values)
{
    std::array<double, kChannelCount> degrees{};
    for (size_t i = 0; i < degrees.size(); ++i) {
        degrees[i] = values.mChannels[i].mFundamentalDegrees;
    }
    return {degrees, values.mChannels[kFirstVoltage].mFundamentalRms};
}

ReferenceValues referenceValuesOf(const WaveParameters& parameters)
{
    return ReferenceMeter(parameters).measure();
}

} // namespace generate
