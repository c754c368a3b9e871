#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "MeterRun.h"
#include "base/Numbers.h"
#include "measure/PhasorMeter.h"

using measure::Channel;
using measure::PhasorClass;
using measure::QuantityId;
using Complex = std::complex<double>;

namespace {
constexpr double kPhasorVolts = 230.0;
constexpr double kAmperes = 5.0;

/** The signal begins 0.3 s after a full second; times in the tests are from that second. */
constexpr double kBeginSeconds = 0.3;
constexpr qint64 kFullSecondNs = 1'700'000'000'000'000'000;

/** A three-phase system; the currents are 30 degrees behind. */
struct System
{
    double mNominalHz = 50.0;
    double mHz = 50.0;
    double mHzPerSecond = 0.0;
    double mModulationHz = 0.0;
    double mAmplitude = 0.0; ///< of the modulation of the amplitude
    double mRadians = 0.0;   ///< of the modulation of the phase
    double mNegative = 0.0;  ///< sequence, of the positive one
    double mHarmonics = 0.0; ///< each of the orders 2 to 49, of the fundamental

    /** The positive sequence with rms 1, relative to a cosine at the nominal frequency. */
    Complex positiveAt(double t) const
    {
        const double wave = std::cos(base::kTwoPi * mModulationHz * t);
        const double cycles = (mHz - mNominalHz) * t + mHzPerSecond * t * t / 2.0;
        return std::polar(1.0 + mAmplitude * wave, base::kTwoPi * cycles + mRadians * wave);
    }

    double hertzAt(double t) const
    {
        return mHz + mHzPerSecond * t -
               mRadians * mModulationHz * std::sin(base::kTwoPi * mModulationHz * t);
    }

    /** The phasor of one of six phases. */
    Complex phasorAt(size_t phase, double t) const
    {
        const Complex positive = positiveAt(t);
        const double shift = base::kTwoPi * static_cast<double>(phase % 3) / 3.0;
        const Complex unit = positive * std::polar(1.0, -shift) +
                             mNegative * positive * std::polar(1.0, shift + 1.0);
        return phase < 3 ? kPhasorVolts * unit
                         : kAmperes * unit * std::polar(1.0, -base::kPi / 6.0);
    }

    double valueAt(size_t channel, double t) const
    {
        if (channel % 4 == 3) {
            return 0.0;
        }
        const Complex phasor = phasorAt(channel < 4 ? channel : channel - 1, t);
        const double angle = base::kTwoPi * mNominalHz * t + std::arg(phasor);
        double sum = std::cos(angle);
        for (int order = 2; mHarmonics > 0.0 && order < 50; ++order) {
            sum += mHarmonics * std::cos(order * angle + order);
        }
        return std::sqrt(2.0) * std::abs(phasor) * sum;
    }
};

/** A filter of the standard's reference models. */
struct Filter
{
    int mOrder;
    double mStep;        ///< s
    double mReferenceHz; ///< 0 for class P

    double weightOf(int index) const
    {
        if (mReferenceHz == 0.0) {
            return 1.0 - 2.0 * std::abs(index) / (mOrder + 2.0);
        }
        const double angle = base::kTwoPi * 2.0 * mReferenceHz * index * mStep;
        return (index == 0 ? 1.0 : std::sin(angle) / angle) *
               (0.54 + 0.46 * std::cos(base::kTwoPi * index / mOrder));
    }

    template <typename Function>
    Complex sumOf(Function function) const
    {
        Complex sum;
        for (int index = -mOrder / 2; index <= mOrder / 2; ++index) {
            sum += weightOf(index) * Complex(function(index * mStep));
        }
        return sum;
    }
};

/** The positive sequence after the filter of the class. */
struct Filtered
{
    Filtered(const System& system, const Filter& filter, double t)
    {
        const auto at = [&](double middle) {
            return filter.sumOf([&](double delay) { return system.positiveAt(middle + delay); });
        };
        const Complex before = at(t - filter.mStep);
        const Complex after = at(t + filter.mStep);
        const Complex middle = at(t);
        const double deviation = std::arg(after / before) / (2.0 * filter.mStep);
        mPhasor = middle / filter.sumOf([&](double delay) { return std::cos(deviation * delay); });
        mHz = system.mNominalHz + deviation / base::kTwoPi;
        mHzPerSecond = (std::arg(after / middle) - std::arg(middle / before)) /
                       (base::kTwoPi * filter.mStep * filter.mStep);
    }

    Complex mPhasor;
    double mHz;
    double mHzPerSecond;
};

std::vector<double> timesOf(double rate, double seconds)
{
    std::vector<double> times;
    for (int i = 0; i / rate <= seconds; ++i) {
        times.push_back(i / rate);
    }
    return times;
}

/** Whole steps of nanoseconds, and another rate in each period. */
std::vector<double> changingTimes(double seconds)
{
    std::vector<double> times{0.0};
    while (times.back() < seconds) {
        const double hertz = 47.0 + 6.0 * static_cast<double>(times.size() / 360 % 7) / 7.0;
        times.push_back(times.back() + std::trunc(1e9 / (360.0 * hertz)) * 1e-9);
    }
    return times;
}

struct PhasorCase
{
    const char* mName;
    PhasorClass mClass;
    int mRate;
    System mSystem;
    double mSamplesPerSecond; ///< 0: it changes
    double mVectorError;      ///< allowed, of the rms
    double mHz;               ///< allowed
    double mHzPerSecond;      ///< allowed
    Filter mFilter{};
};

void PrintTo(const PhasorCase& testCase, std::ostream* out)
{
    *out << testCase.mName;
}

class PhasorTest : public testing::TestWithParam<PhasorCase>
{
protected:
    static MeasuredRows measure(const PhasorCase& testCase, const std::vector<double>& times)
    {
        measure::PhasorMeter meter({kFullSecondNs + qint64(kBeginSeconds * 1e9), kPhasorVolts,
                                    kAmperes, testCase.mSystem.mNominalHz},
                                   testCase.mClass, testCase.mRate);
        return runMeter(meter, times, [&](size_t channel, double seconds) {
            return testCase.mSystem.valueAt(channel, kBeginSeconds + seconds);
        });
    }

    static MeasuredRows measure(const PhasorCase& testCase)
    {
        constexpr double kLength = 2.0;
        return measure(testCase, testCase.mSamplesPerSecond > 0.0
                                     ? timesOf(testCase.mSamplesPerSecond, kLength)
                                     : changingTimes(kLength));
    }

    /** The largest errors of the rows of one phasor. */
    template <typename Expected>
    static double vectorError(const MeasuredRows& rows, Channel channel, Expected expected)
    {
        const bool isSystem = channel == Channel::U || channel == Channel::I;
        const auto magnitudes = rows.of(
            isSystem ? QuantityId::PositivePhasorMagnitude : QuantityId::PhasorMagnitude, channel);
        const auto angles =
            rows.of(isSystem ? QuantityId::PositivePhasorAngle : QuantityId::PhasorAngle, channel);
        EXPECT_GE(magnitudes.size(), 5U);
        EXPECT_EQ(magnitudes.size(), angles.size());
        double largest = 0.0;
        for (size_t i = 0; i < std::min(magnitudes.size(), angles.size()); ++i) {
            const Complex measured =
                std::polar(magnitudes[i].mValue, angles[i].mValue * base::kRadiansPerDegree);
            const Complex right = expected(secondsOf(magnitudes[i]));
            largest = std::max(largest, std::abs(measured - right) / std::abs(right));
        }
        return largest;
    }

    template <typename Expected>
    static double errorOf(const MeasuredRows& rows, QuantityId id, Expected expected)
    {
        double largest = rows.of(id, Channel::None).empty() ? 1e9 : 0.0;
        for (const measure::Measurement& row : rows.of(id, Channel::None)) {
            largest = std::max(largest, std::abs(row.mValue - expected(secondsOf(row))));
        }
        return largest;
    }

    static double secondsOf(const measure::Measurement& row)
    {
        return static_cast<double>(row.mUtcNs - kFullSecondNs) * 1e-9;
    }
};

constexpr Filter kP50{28, 1.0 / 750, 0.0};
constexpr Filter kM50{142, 1.0 / 800, 7.75};
constexpr Filter kM60{306, 1.0 / 960, 5.02};

const PhasorCase kSteady[] = {
    {"P", PhasorClass::P, 50, {50, 50}, 18000, 1e-5, 1e-6, 1e-3},
    {"P45", PhasorClass::P, 50, {50, 45}, 18000, 1e-5, 1e-5, 1e-3},
    {"P55Unbalanced", PhasorClass::P, 100, {50, 55, 0, 0, 0, 0, 0.3}, 18000, 1e-5, 1e-5, 1e-2},
    {"PChangingRate", PhasorClass::P, 50, {50, 51.3}, 0, 1e-5, 1e-5, 1e-3},
    {"PSlow", PhasorClass::P, 25, {50, 49.3, 0, 0, 0, 0, 0.1}, 1000, 1e-5, 1e-5, 1e-3},
    {"PHarmonics", PhasorClass::P, 50, {50, 50.02, 0, 0, 0, 0, 0, 0.05}, 18000, 1e-5, 1e-4, 0.1},
    {"P60", PhasorClass::P, 120, {60, 59.1}, 21600, 1e-5, 1e-5, 1e-3},
    {"M45", PhasorClass::M, 50, {50, 45, 0, 0, 0, 0, 0.1}, 18000, 1e-5, 1e-5, 1e-3},
    {"M10", PhasorClass::M, 10, {50, 51.9}, 18000, 1e-5, 1e-5, 1e-3},
    {"M60", PhasorClass::M, 30, {60, 64.9}, 21600, 1e-5, 1e-5, 1e-3},
    {"MChangingRate", PhasorClass::M, 25, {50, 53}, 0, 1e-5, 1e-5, 1e-3},
};

const PhasorCase kDynamic[] = {
    {"PAmplitude", PhasorClass::P, 50, {50, 50, 0, 2, 0.1}, 18000, 1e-5, 1e-5, 0.01, kP50},
    {"PPhase", PhasorClass::P, 50, {50, 50, 0, 2, 0.1, 0.1}, 18000, 1e-5, 1e-5, 0.01, kP50},
    {"PRamp", PhasorClass::P, 50, {50, 48, 1}, 18000, 1e-5, 1e-5, 0.01, kP50},
    {"MPhase", PhasorClass::M, 50, {50, 50, 0, 5, 0.1, 0.1}, 18000, 1e-5, 1e-5, 0.01, kM50},
    {"MRamp", PhasorClass::M, 30, {60, 58, -1}, 21600, 1e-6, 1e-6, 0.003, kM60},
};
} // namespace

INSTANTIATE_TEST_SUITE_P(Steady, PhasorTest, testing::ValuesIn(kSteady),
                         [](const auto& each) { return each.param.mName; });

/** The signal itself, at any frequency, rate and unbalance. */
TEST_P(PhasorTest, IsExact)
{
    const PhasorCase& testCase = GetParam();
    const System& system = testCase.mSystem;
    const MeasuredRows rows = measure(testCase);
    for (size_t phase = 0; phase < 6; ++phase) {
        const Channel channel = measure::deviceChannel(phase < 3 ? phase : phase + 1);
        EXPECT_LE(vectorError(rows, channel, [&](double t) { return system.phasorAt(phase, t); }),
                  testCase.mVectorError)
            << measure::nameOf(channel);
    }
    EXPECT_LE(vectorError(rows, Channel::U,
                          [&](double t) { return kPhasorVolts * system.positiveAt(t); }),
              testCase.mVectorError);
    EXPECT_LE(vectorError(rows, Channel::I,
                          [&](double t) {
                              return std::polar(kAmperes, -base::kPi / 6.0) * system.positiveAt(t);
                          }),
              testCase.mVectorError);
    EXPECT_LE(errorOf(rows, QuantityId::PhasorFrequency, [&](double) { return system.mHz; }),
              testCase.mHz);
    EXPECT_LE(errorOf(rows, QuantityId::Rocof, [&](double) { return 0.0; }), testCase.mHzPerSecond);
}

class PhasorDynamicsTest : public PhasorTest
{
};

INSTANTIATE_TEST_SUITE_P(Dynamic, PhasorDynamicsTest, testing::ValuesIn(kDynamic),
                         [](const auto& each) { return each.param.mName; });

/** Signals that are not steady have the values behind the filter of the class. */
TEST_P(PhasorDynamicsTest, IsTheFilterOfTheClass)
{
    const PhasorCase& testCase = GetParam();
    const System& system = testCase.mSystem;
    const MeasuredRows rows = measure(testCase);
    const auto filtered = [&](double t) { return Filtered(system, testCase.mFilter, t); };
    EXPECT_LE(
        vectorError(rows, Channel::U, [&](double t) { return kPhasorVolts * filtered(t).mPhasor; }),
        testCase.mVectorError);
    EXPECT_LE(errorOf(rows, QuantityId::PhasorFrequency, [&](double t) { return filtered(t).mHz; }),
              testCase.mHz);
    EXPECT_LE(errorOf(rows, QuantityId::Rocof, [&](double t) { return filtered(t).mHzPerSecond; }),
              testCase.mHzPerSecond);
    const double classError = vectorError(
        rows, Channel::U, [&](double t) { return kPhasorVolts * system.positiveAt(t); });
    const double classHz =
        errorOf(rows, QuantityId::PhasorFrequency, [&](double t) { return system.hertzAt(t); });
    RecordProperty("classVectorError", std::to_string(classError));
    RecordProperty("classHz", std::to_string(classHz));
    EXPECT_LE(classError, 0.01); // what the standard allows for ramps, a third of it for modulation
}

/** Frames are stamped k / rate of the second, and none reaches beyond the signal or into a gap. */
TEST_F(PhasorTest, FramesNeedAWholeWindow)
{
    const PhasorCase testCase{"", PhasorClass::P, 60, {60, 60}, 0, 0, 0, 0};
    std::vector<double> times;
    for (int i = 0; i <= 20'000; ++i) {
        if (i < 8000 || i >= 8120) { // 12 ms are missing from 0.8 s on
            times.push_back(i / 10'000.0);
        }
    }
    const MeasuredRows rows = measure(testCase, times);
    std::vector<qint64> frames;
    for (const auto& row : rows.of(QuantityId::PhasorMagnitude, Channel::UA)) {
        const double frame = secondsOf(row) * 60.0;
        EXPECT_NEAR(frame, std::round(frame), 1e-6);
        frames.push_back(std::llround(frame));
    }
    std::vector<qint64> expected;
    for (qint64 frame = 0; frame < 200; ++frame) {
        const double seconds = static_cast<double>(frame) / 60.0 - kBeginSeconds;
        const double reach = 1.0 / 60 + 1.0 / 900;
        const auto isInside = [&](double from, double to) {
            return seconds - reach > from && seconds + reach < to;
        };
        if (isInside(0.0, 0.7999) || isInside(0.812, 2.0)) {
            expected.push_back(frame);
        }
    }
    EXPECT_EQ(frames, expected);
}

/** A voltage of 0 has a magnitude, but neither angle nor frequency. */
TEST_F(PhasorTest, ZeroHasNoAngle)
{
    measure::PhasorMeter meter({kFullSecondNs, kPhasorVolts, kAmperes, 50.0}, PhasorClass::M, 25);
    const MeasuredRows rows = runMeter(meter, timesOf(18'000, 1.0), [](size_t channel, double t) {
        return channel == 1 ? 100.0 * std::cos(base::kTwoPi * 50.0 * t) : 0.0;
    });
    EXPECT_FALSE(rows.of(QuantityId::PhasorMagnitude, Channel::UA).empty());
    EXPECT_TRUE(rows.of(QuantityId::PhasorAngle, Channel::UA).empty());
    EXPECT_FALSE(rows.of(QuantityId::PhasorAngle, Channel::UB).empty());
    EXPECT_FALSE(rows.of(QuantityId::Rocof, Channel::None).empty());
    EXPECT_NE(measure::PhasorWindow::problemOf(PhasorClass::M, 60, 50.0), "");
    EXPECT_EQ(measure::PhasorWindow::problemOf(PhasorClass::P, 60, 50.0), "");
}
