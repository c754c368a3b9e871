#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "SeededRandom.h"
#include "generate/StepEnvelope.h"
#include "generate/Wave.h"
#include "generate/WaveFile.h"

/** Computed by hand. */
TEST(WaveTest, HarmonicsAndDisturbancesChangeTheirChannels)
{
    generate::WaveParameters parameters;
    EXPECT_EQ(generate::roundedValues(generate::Wave(parameters).valuesOf(10)),
              (std::array<qint32, 8>{56482, -305653, 249171, 0, -2418, -4545, 6964, 0}));
    parameters.mDuration = 0.04;
    parameters.mChannels.fill({1000, 0});
    parameters.mHarmonics = {{3, 0.2, 90, 0x01}};
    parameters.mDisturbances = {{0.02, 0.01, 0.4, -30, 0x03}, {0.025, 0.01, 0.5, 30, 0x02}};
    ASSERT_EQ(generate::problemOf(parameters), "");
    struct Case
    {
        qint64 mSample;
        qint32 mValues[3];
    };
    for (const Case& it :
         {Case{0, {200, 0, 0}}, Case{60, {666, 866, 866}}, Case{359, {182, -17, -17}},
          Case{360, {-200, -200, 0}}, Case{390, {80, 0, 500}}, Case{449, {263, 343, 1000}},
          Case{450, {266, 200, 1000}}, Case{539, {210, 3, 17}}, Case{540, {-200, -250, 0}},
          Case{629, {-989, -437, -1000}}, Case{630, {-1000, -1000, -1000}}}) {
        const auto values =
            generate::roundedValues(generate::Wave(parameters).valuesOf(it.mSample));
        for (std::size_t channel = 0; channel < 3; ++channel) {
            EXPECT_EQ(values[channel], it.mValues[channel]) << it.mSample << ' ' << channel;
        }
    }
    parameters.mHarmonics[0].mOrder = 179;
    EXPECT_EQ(generate::problemOf(parameters), "");
}

namespace {
/** Random waves that can be written. */
class RandomWaves
{
public:
    generate::WaveParameters next()
    {
        generate::WaveParameters wave;
        wave.mDuration = 0.2;
        for (generate::WaveChannel& channel : wave.mChannels) {
            channel = {number(-1e6, 1e6), number(-360.0, 360.0)};
        }
        for (auto left = mRandom() % 3; left > 0; --left) {
            wave.mHarmonics.push_back(
                {int(2 + mRandom() % 50), number(0.0, 0.3), number(-360.0, 360.0), channels()});
            wave.mDisturbances.push_back({number(0.0, 0.1), number(0.0, 0.1), number(0.0, 2.0),
                                          number(-180.0, 180.0), channels()});
            wave.mModulations.push_back({number(0.1, 20.0), number(-1.0, 1.0), number(-3.0, 3.0),
                                         generate::ModulationShape::Sine, channels()});
            wave.mTones.push_back({number(0.0, 0.2), number(0.0, 2000.0), number(0.0, 1.0),
                                   number(-360.0, 360.0), number(0.001, 1.0), channels()});
        }
        return wave;
    }

private:
    double number(double min, double max)
    {
        return std::uniform_real_distribution<double>(min, max)(mRandom);
    }
    generate::ChannelSet channels() { return {mRandom() % 256}; }

    std::mt19937 mRandom = seededRandom();
};

double sineOfDegrees(double degrees)
{
    return std::sin(degrees / 180.0 * M_PI);
}

/** The value by the parameters; no value within a line of an edge. */
std::optional<double> closedFormOf(const generate::WaveParameters& wave, qint64 line,
                                   double seconds, size_t channel)
{
    const auto isNear = [seconds](double edge) { return std::abs(seconds - edge) < 6e-5; };
    double amplitude = wave.mChannels[channel].mAmplitude;
    double degrees = double(line) + wave.mChannels[channel].mPhase;
    double tones = 0.0;
    for (const generate::Tone& it : wave.mTones) {
        const double since = seconds - it.mStart;
        if (isNear(it.mStart)) {
            return std::nullopt;
        }
        if (it.mChannels.test(channel) && since > 0.0) {
            tones += amplitude * it.mRatio * std::exp(-since / it.mTimeConstant) *
                     sineOfDegrees(360.0 * it.mHertz * since + it.mPhase);
        }
    }
    for (const generate::Disturbance& it : wave.mDisturbances) {
        const double end = it.mStart + it.mDuration;
        if (isNear(it.mStart) || isNear(end)) {
            return std::nullopt;
        }
        if (it.mChannels.test(channel) && seconds > it.mStart && seconds < end) {
            amplitude *= it.mFactor;
            degrees += it.mPhaseJump;
        }
    }
    for (const generate::Modulation& it : wave.mModulations) {
        if (it.mChannels.test(channel)) {
            const double shape = std::cos(2.0 * M_PI * it.mHertz * seconds);
            amplitude *= 1.0 + it.mDepth * shape;
            degrees -= it.mPhaseDepth * shape * 180.0 / M_PI;
        }
    }
    double sum = sineOfDegrees(degrees);
    for (const generate::Harmonic& it : wave.mHarmonics) {
        sum += it.mChannels.test(channel)
                   ? it.mRatio * sineOfDegrees(it.mOrder * degrees + it.mPhase)
                   : 0.0;
    }
    return amplitude * sum + tones;
}
} // namespace

TEST(WaveTest, AnyWaveMatchesItsClosedForm)
{
    RandomWaves waves;
    size_t compared = 0;
    for (int round = 0; round < 30; ++round) {
        const generate::WaveParameters parameters = waves.next();
        ASSERT_EQ(generate::problemOf(parameters), "");
        generate::Wave wave(parameters);
        for (qint64 line = 0; line < wave.timeline().lineCount(); line += 7) {
            const generate::LineValues values = wave.read(line);
            for (size_t channel = 0; channel < values.size(); ++channel) {
                const std::optional<double> closed =
                    closedFormOf(parameters, line, wave.timeline().secondsOf(line), channel);
                ASSERT_NEAR(values[channel], closed.value_or(values[channel]), 0.01)
                    << round << ' ' << line << ' ' << channel;
                compared += closed ? 1 : 0;
            }
        }
    }
    EXPECT_GT(compared, 100'000U);
}

/** A rectangle changes every half cycle, on the nearest line; a disturbance excludes its end. */
TEST(StepEnvelopeTest, ChangesOnTheNearestLine)
{
    generate::WaveParameters wave;
    wave.mModulations.push_back({7.0, 0.1, 0.5, generate::ModulationShape::Rectangle, 0b0001});
    wave.mDisturbances.push_back({0.1, 0.2, 0.4, -30.0, 0b0010});
    const generate::Timeline timeline(wave);
    const generate::StepEnvelope envelope(wave, timeline);
    const double peak = wave.mChannels[0].mAmplitude;
    const double degrees = 0.5 * 180.0 / std::acos(-1.0);
    for (int change = 0; change < 14; ++change) {
        const double sign = change % 2 == 0 ? 1.0 : -1.0;
        const auto first = std::llround(change * 18'000.0 / 14.0);
        const auto last = std::llround((change + 1) * 18'000.0 / 14.0) - 1;
        for (const qint64 line : {qint64(first), qint64(last)}) {
            const generate::Fundamental found = envelope.fundamentalAt(line, 0);
            EXPECT_NEAR(found.mAmplitude, peak * (1.0 + 0.1 * sign), 1e-6) << line;
            EXPECT_NEAR(found.mPhase, -degrees * sign, 1e-9) << line;
        }
    }
    const std::pair<qint64, bool> lines[] = {
        {1799, false}, {1800, true}, {5399, true}, {5400, false}};
    for (const auto& [line, isDisturbed] : lines) {
        const generate::Fundamental found = envelope.fundamentalAt(line, 1);
        EXPECT_NEAR(found.mAmplitude, peak * (isDisturbed ? 0.4 : 1.0), 1e-6) << line;
        EXPECT_NEAR(found.mPhase, isDisturbed ? -150.0 : -120.0, 1e-9) << line;
        EXPECT_NEAR(envelope.fundamentalAt(line, 2).mPhase, 120.0, 1e-9) << line;
    }
}
