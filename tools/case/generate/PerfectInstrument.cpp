#include "generate/PerfectInstrument.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <optional>

#include "SampleStep.h"
#include "base/Numbers.h"
#include "generate/ToneSum.h"

namespace generate {

namespace {
using Json = nlohmann::ordered_json;
using Complex = std::complex<double>;

constexpr double kPercent = 100.0;
constexpr int kHalfPeriod = kSamplesPerPeriod / 2;

constexpr std::array<const char*, kChannelCount> kChannelNames{"UA", "UB", "UC", "UN",
                                                               "IA", "IB", "IC", "IN"};

/** What the receiver of the time stamps sees of a frequency in the file. */
double playedHertz(float hertz)
{
    constexpr double kNanosecondsPerSecond = 1e9;
    return kNanosecondsPerSecond / (double(sampleStepOf(hertz)) * kSamplesPerPeriod);
}

Json placeOf(const Timeline& timeline, qint64 line)
{
    const qint64 last = timeline.lineCount() - 1;
    const double step = double(sampleStepOf(timeline.frequencyOf(last))) * 1e-9;
    const double seconds = line > last ? timeline.stampOf(last) + step : timeline.stampOf(line);
    return {{"line", line}, {"seconds", seconds}};
}

Json listOf(const ChannelSet& channels)
{
    Json list = Json::array();
    for (size_t channel = 0; channel < channels.size(); ++channel) {
        if (channels.test(channel)) {
            list.push_back(channel);
        }
    }
    return list;
}

/** One description and what is measured of it. */
class PerfectInstrument
{
public:
    explicit PerfectInstrument(const WaveParameters& parameters)
        : mParameters(parameters), mTimeline(parameters)
    {
    }

    Json measure() const;

private:
    struct Extreme
    {
        double mRms;
        qint64 mLine; ///< the first one of its period
    };

    Json frequency() const;
    Json course() const;
    Json largestSlope() const;
    Json channel(size_t channel) const;
    Json rmsExtremes(size_t channel) const;
    Json extremeOf(const std::optional<Extreme>& extreme) const;
    double distortion(size_t channel) const;
    Json harmonics(size_t channel) const;
    Json unbalance() const;
    Json events() const;
    Json event(const Disturbance& disturbance) const;
    Json tones() const;
    Json modulations() const;

    /** Otherwise a change may be so fast that it shows among the harmonics. */
    bool hasNoRectangle() const
    {
        return std::none_of(mParameters.mModulations.begin(), mParameters.mModulations.end(),
                            [](const Modulation& modulation) {
                                return modulation.mShape == ModulationShape::Rectangle;
                            });
    }

    /** How much faster than described everything is played, because the step is truncated. */
    double haste() const
    {
        return playedHertz(mParameters.mFrequency) / double(mParameters.mFrequency);
    }

    const WaveParameters& mParameters;
    Timeline mTimeline;
};

Json PerfectInstrument::measure() const
{
    Json measured{{"lines", mTimeline.lineCount()},
                  {"seconds", placeOf(mTimeline, mTimeline.lineCount())["seconds"]},
                  {"frequency", frequency()}};
    for (size_t i = 0; i < kChannelCount; ++i) {
        measured["channels"].push_back(channel(i));
    }
    if (hasNoRectangle()) {
        measured["unbalance"] = unbalance();
    }
    measured["events"] = events();
    measured["tones"] = tones();
    measured["modulations"] = modulations();
    return measured;
}

Json PerfectInstrument::frequency() const
{
    if (!mParameters.mCourse.empty()) {
        return course();
    }
    const double played = playedHertz(mParameters.mFrequency);
    double deviation = 0.0;
    double slope = 0.0;
    for (const Modulation& modulation : mParameters.mModulations) {
        if (modulation.mShape == ModulationShape::Sine) {
            const double hertz = modulation.mHertz * haste();
            deviation += std::abs(modulation.mPhaseDepth) * hertz;
            slope += std::abs(modulation.mPhaseDepth) * hertz * hertz * 2.0 * base::kPi;
        }
    }
    return {{"fileHertz", mParameters.mFrequency},
            {"hertz", played},
            {"minimumHertz", played - deviation},
            {"maximumHertz", played + deviation},
            {"largestHertzPerSecond", slope}};
}

/** The file's frequency changes from period to period; the points are those of the course. */
Json PerfectInstrument::course() const
{
    Json points = Json::array();
    const auto addPoint = [this, &points](qint64 line) {
        if (!points.empty() && points.back()["line"] == line) {
            return; // a jump has one place
        }
        Json point = placeOf(mTimeline, line);
        point["fileHertz"] = mTimeline.frequencyOf(line);
        point["hertz"] = playedHertz(mTimeline.frequencyOf(line));
        points.push_back(point);
    };
    const qint64 last = mTimeline.lineCount() - kSamplesPerPeriod;
    addPoint(0);
    for (const FrequencyPoint& point : mParameters.mCourse) {
        addPoint(std::min(mTimeline.lineAt(point.mSeconds) / kSamplesPerPeriod * kSamplesPerPeriod,
                          last));
    }
    addPoint(last);
    const auto [least, most] =
        std::minmax_element(points.begin(), points.end(), [](const Json& a, const Json& b) {
            return a["hertz"].get<double>() < b["hertz"].get<double>();
        });
    return {{"minimumHertz", (*least)["hertz"]},
            {"maximumHertz", (*most)["hertz"]},
            {"largestHertzPerSecond", largestSlope()},
            {"points", points}};
}

/** In Hz/s; null where the course jumps. */
Json PerfectInstrument::largestSlope() const
{
    double slope = 0.0;
    for (size_t i = 1; i < mParameters.mCourse.size(); ++i) {
        const FrequencyPoint& from = mParameters.mCourse[i - 1];
        const FrequencyPoint& to = mParameters.mCourse[i];
        if (to.mSeconds > from.mSeconds) {
            slope = std::max(slope,
                             std::abs((to.mHertz - from.mHertz) / (to.mSeconds - from.mSeconds)));
        } else if (to.mHertz != from.mHertz) {
            return nullptr;
        }
    }
    return slope;
}

Json PerfectInstrument::channel(size_t channel) const
{
    const WaveChannel& wave = mParameters.mChannels[channel];
    Json measured{{"channel", channel},
                  {"name", kChannelNames[channel]},
                  {"fundamentalRms", std::abs(wave.mAmplitude) / std::sqrt(2.0)},
                  {"fundamentalDegrees", wave.degrees()},
                  {"rms", rmsExtremes(channel)}};
    if (hasNoRectangle()) {
        measured["thdPercent"] = distortion(channel);
        measured["harmonics"] = harmonics(channel);
    }
    return measured;
}

double PerfectInstrument::distortion(size_t channel) const
{
    double squares = 0.0;
    for (const Harmonic& harmonic : mParameters.mHarmonics) {
        squares += harmonic.mChannels.test(channel) ? harmonic.mRatio * harmonic.mRatio : 0.0;
    }
    return std::sqrt(squares) * kPercent;
}

/**
 * The rms of one period, from each zero crossing of the channel's undisturbed wave on: renewed
 * each half period. An extreme's place is the first line of the first such period.
 */
Json PerfectInstrument::rmsExtremes(size_t channel) const
{
    constexpr double kSame = 1e-5; // a tail of a decay is no extreme
    const ToneSum sum(mParameters, mTimeline, channel);
    const double phase = std::fmod(mParameters.mChannels[channel].mPhase, kHalfPeriod);
    const auto first = qint64(std::ceil(phase > 0.0 ? kHalfPeriod - phase : -phase));
    std::optional<Extreme> least;
    std::optional<Extreme> most;
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
        if (!least || rms < least->mRms * (1.0 - kSame)) {
            least = {rms, line};
        }
        if (!most || rms > most->mRms * (1.0 + kSame)) {
            most = {rms, line};
        }
    }
    return {{"minimum", extremeOf(least)}, {"maximum", extremeOf(most)}};
}

/** Null in a file that is too short for one. */
Json PerfectInstrument::extremeOf(const std::optional<Extreme>& extreme) const
{
    if (!extreme) {
        return nullptr;
    }
    Json place = placeOf(mTimeline, extreme->mLine);
    place["value"] = extreme->mRms;
    return place;
}

Json PerfectInstrument::harmonics(size_t channel) const
{
    Json list = Json::array();
    const bool isTurned = mParameters.mChannels[channel].mAmplitude < 0.0;
    for (const Harmonic& harmonic : mParameters.mHarmonics) {
        if (harmonic.mChannels.test(channel)) {
            // Half a turn of the fundamental is whole turns of an even order, which is turned too.
            const double turn = isTurned && harmonic.mOrder % 2 == 0 ? 180.0 : 0.0;
            list.push_back({{"order", harmonic.mOrder},
                            {"percent", harmonic.mRatio * kPercent},
                            {"degrees", harmonic.mPhase + turn}});
        }
    }
    return list;
}

/** Of the undisturbed voltages, in percent of their positive sequence. */
Json PerfectInstrument::unbalance() const
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
        return nullptr;
    }
    return {{"negativePercent", std::abs(a + turn * turn * b + turn * c) / positive * kPercent},
            {"zeroPercent", std::abs(a + b + c) / positive * kPercent}};
}

Json PerfectInstrument::events() const
{
    Json list = Json::array();
    for (const Disturbance& disturbance : mParameters.mDisturbances) {
        list.push_back(event(disturbance));
    }
    return list;
}

Json PerfectInstrument::event(const Disturbance& disturbance) const
{
    const qint64 begin = mTimeline.lineAt(disturbance.mStart);
    const qint64 end = std::min(mTimeline.lineAt(disturbance.mStart + disturbance.mDuration),
                                mTimeline.lineCount());
    const char* kind = disturbance.mFactor < 1.0 ? "dip" : "swell";
    kind = disturbance.mFactor == 1.0 ? "phase jump" : kind;
    kind = end == mTimeline.lineCount() ? "step" : kind;
    const Json from = placeOf(mTimeline, begin);
    const Json to = placeOf(mTimeline, end);
    return {{"kind", kind},
            {"channels", listOf(disturbance.mChannels)},
            {"begin", from},
            {"end", to},
            {"durationSeconds", to["seconds"].get<double>() - from["seconds"].get<double>()},
            {"residualPercent", disturbance.mFactor * kPercent},
            {"depthPercent", (1.0 - disturbance.mFactor) * kPercent},
            {"phaseJumpDegrees", disturbance.mPhaseJump}};
}

Json PerfectInstrument::tones() const
{
    Json list = Json::array();
    for (const Tone& tone : mParameters.mTones) {
        Json timeConstant; // none: it lasts
        if (std::isfinite(tone.mTimeConstant)) {
            timeConstant = tone.mTimeConstant / haste();
        }
        list.push_back({{"channels", listOf(tone.mChannels)},
                        {"begin", placeOf(mTimeline, mTimeline.lineAt(tone.mStart))},
                        {"hertz", tone.mHertz * haste()},
                        {"percent", tone.mRatio * kPercent},
                        {"degrees", tone.mPhase},
                        {"timeConstantSeconds", timeConstant}});
    }
    return list;
}

Json PerfectInstrument::modulations() const
{
    Json list = Json::array();
    for (const Modulation& modulation : mParameters.mModulations) {
        const bool isSine = modulation.mShape == ModulationShape::Sine;
        list.push_back({{"channels", listOf(modulation.mChannels)},
                        {"shape", isSine ? "sine" : "rectangle"},
                        {"hertz", modulation.mHertz * haste()},
                        {"amplitudePercent", modulation.mDepth * kPercent},
                        {"phaseRadians", modulation.mPhaseDepth}});
    }
    return list;
}
} // namespace

nlohmann::ordered_json measuredByPerfectInstrument(const WaveParameters& parameters)
{
    return PerfectInstrument(parameters).measure();
}

} // namespace generate
