#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "MeterRun.h"
#include "base/Numbers.h"
#include "measure/FlickerMeter.h"

using measure::Channel;
using measure::Lamp;
using measure::QuantityId;

namespace {
constexpr qint64 kShortTermNs = 600'000'000'000;
constexpr qint64 kEvenHour = 236'111; ///< in periods of two hours from the epoch

/** A fluctuation of one voltage, and the expected value of the quantity. */
struct Fluctuation
{
    double mHz;      ///< of two changes
    double mPercent; ///< peak to peak
    double mAllowed; ///< relative error
};

struct FlickerCase
{
    const char* mName;
    Lamp mLamp;
    double mNominalHz;
    bool mIsRectangular; ///< Pst is 1; else sinusoidal, and the largest level is 1
    std::array<Fluctuation, 3> mFluctuations;
};

void PrintTo(const FlickerCase& testCase, std::ostream* out)
{
    *out << testCase.mName;
}

constexpr double perMinute(double changes)
{
    return changes / 120.0;
}

const FlickerCase kFlickerCases[] = {
    {"Rectangular230Slow",
     Lamp::V230,
     50,
     true,
     {{{perMinute(1), 2.715, 0.01}, {perMinute(2), 2.191, 0.01}, {perMinute(7), 1.450, 0.01}}}},
    {"Rectangular230",
     Lamp::V230,
     50,
     true,
     {{{perMinute(39), 0.894, 0.01},
       {perMinute(110), 0.722, 0.01},
       {perMinute(1620), 0.407, 0.01}}}},
    {"Rectangular230Fast",
     Lamp::V230,
     50,
     true,
     {{{perMinute(4000), 2.343, 0.01},
       {perMinute(110), 0.722, 0.01},
       {perMinute(39), 0.894, 0.01}}}},
    {"Rectangular120Slow",
     Lamp::V120,
     60,
     true,
     {{{perMinute(1), 3.181, 0.01}, {perMinute(2), 2.564, 0.01}, {perMinute(7), 1.694, 0.01}}}},
    {"Rectangular120",
     Lamp::V120,
     60,
     true,
     {{{perMinute(39), 1.040, 0.01},
       {perMinute(110), 0.844, 0.01},
       {perMinute(1620), 0.548, 0.01}}}},
    {"Rectangular120Fast",
     Lamp::V120,
     60,
     true,
     {{{perMinute(4800), 4.837, 0.01},
       {perMinute(110), 0.844, 0.01},
       {perMinute(39), 1.040, 0.01}}}},
    {"Sinusoidal230",
     Lamp::V230,
     50,
     false,
     {{{8.8, 0.250, 0.01}, {0.5, 2.325, 0.01}, {100.0 / 3.0, 2.128, 0.01}}}},
    {"Sinusoidal120",
     Lamp::V120,
     60,
     false,
     {{{8.8, 0.321, 0.01}, {0.5, 2.453, 0.01}, {8.8, 0.321, 0.01}}}},
};
} // namespace

class FlickerTest : public testing::TestWithParam<FlickerCase>
{
protected:
    static std::vector<double> timesOf(double rate, double seconds)
    {
        std::vector<double> times;
        for (int i = 0; i / rate <= seconds; ++i) {
            times.push_back(i / rate);
        }
        return times;
    }
};

INSTANTIATE_TEST_SUITE_P(Standard, FlickerTest, testing::ValuesIn(kFlickerCases),
                         [](const auto& each) { return each.param.mName; });

/** The test points of the standard, on three voltages with very different amplitudes. */
TEST_P(FlickerTest, HasTheValuesOfTheStandard)
{
    const FlickerCase& testCase = GetParam();
    const double length = testCase.mIsRectangular ? 641.0 : 60.0;
    measure::FlickerMeter meter(
        {kEvenHour * 12 * kShortTermNs - 40'000'000'000, 230.0, 5.0, testCase.mNominalHz},
        testCase.mLamp);
    const auto valueOf = [&](size_t channel, double t) {
        if (channel >= 3) {
            return 0.0;
        }
        const Fluctuation& fluctuation = testCase.mFluctuations[channel];
        double wave = std::sin(base::kTwoPi * fluctuation.mHz * t);
        if (testCase.mIsRectangular) {
            wave = std::fmod(fluctuation.mHz * t, 1.0) < 0.5 ? 1.0 : -1.0;
        }
        const double amplitude = std::pow(10.0, static_cast<double>(channel));
        return amplitude * (1.0 + fluctuation.mPercent / 200.0 * wave) *
               std::sin(base::kTwoPi * testCase.mNominalHz * t);
    };
    const MeasuredRows rows = runMeter(meter, timesOf(72.0 * testCase.mNominalHz, length), valueOf);
    for (size_t channel = 0; channel < 3; ++channel) {
        const auto id =
            testCase.mIsRectangular ? QuantityId::ShortFlicker : QuantityId::InstantaneousFlicker;
        const auto values = rows.of(id, measure::deviceChannel(channel));
        ASSERT_EQ(values.size(), testCase.mIsRectangular ? 1U : 30U);
        EXPECT_NEAR(values.back().mValue, 1.0, testCase.mFluctuations[channel].mAllowed)
            << testCase.mFluctuations[channel].mHz << " Hz";
    }
}

/** Half a percent of ripple at 50 Hz: its peaks count, wherever they are in a tick. */
TEST_F(FlickerTest, ASecondHasTheLargestOfAllLevels)
{
    measure::FlickerMeter meter({kEvenHour * 12 * kShortTermNs, 230.0, 5.0, 50.0}, Lamp::V230);
    const MeasuredRows rows = runMeter(meter, timesOf(2000.0, 45.0), [](size_t channel, double t) {
        const double phase = 0.9 * static_cast<double>(channel);
        const double wave = std::sin(base::kTwoPi * 25.0 * t + phase);
        return (1.0 + 0.005 * wave) * std::sin(base::kTwoPi * 50.0 * t);
    });
    const auto first = rows.of(QuantityId::InstantaneousFlicker, Channel::UA);
    ASSERT_EQ(first.size(), 15U);
    for (const Channel channel : {Channel::UB, Channel::UC}) {
        const auto other = rows.of(QuantityId::InstantaneousFlicker, channel);
        EXPECT_NEAR(other.back().mValue / first.back().mValue, 1.0, 5e-4);
    }
}

/** Percentiles of levels that rise evenly to 1, and the severities of two hours. */
TEST_F(FlickerTest, SeveritiesMatchTheClosedForm)
{
    constexpr qint64 kTicks = 60'000;
    constexpr double kEvenlySpread = 0.0314 * 0.999 + 0.0525 * (1.0 - 0.032 / 3.0) +
                                     0.0657 * (1.0 - 0.092 / 3.0) + 0.28 * (1.0 - 0.54 / 5.0) +
                                     0.08 * (1.0 - 1.6 / 3.0);
    measure::FlickerLevels levels;
    double cubes = 0.0;
    std::vector<double> longTerms;
    for (qint64 i = 0; i < 26; ++i) { // the first is not whole, as are the two hours that it is in
        const double largest = 1.0 + static_cast<double>(i);
        for (qint64 tick = i == 0 ? 1 : 0; tick < kTicks; ++tick) {
            const double level = largest * static_cast<double>((tick * 7) % kTicks) / kTicks;
            const auto values = levels.add((kEvenHour * 12 - 1 + i) * kTicks + tick, level, level);
            ASSERT_EQ(values.mShortTerm.has_value(), i > 0 && tick == kTicks - 1);
            if (values.mShortTerm) {
                EXPECT_NEAR(*values.mShortTerm, std::sqrt(kEvenlySpread * largest), 1e-3);
                cubes += i > 0 && i <= 12 ? std::pow(*values.mShortTerm, 3) : 0.0;
            }
            if (values.mLongTerm) {
                longTerms.push_back(*values.mLongTerm);
            }
        }
    }
    ASSERT_EQ(longTerms.size(), 2U);
    EXPECT_NEAR(longTerms.front(), std::cbrt(cubes / 12.0), 1e-9);
}

/** No value while the filters settle, and none for an interval with a gap. */
TEST_F(FlickerTest, SettlesAfterAGap)
{
    measure::FlickerMeter meter({kEvenHour * 12 * kShortTermNs, 230.0, 5.0, 50.0}, Lamp::V230);
    std::vector<double> times = timesOf(1000.0, 100.0);
    times.erase(times.begin() + 40'000, times.begin() + 40'500);
    const MeasuredRows rows = runMeter(meter, times, [](size_t channel, double t) {
        return channel == 0 ? 325.0 * std::sin(base::kTwoPi * 50.0 * t) : 0.0;
    });
    const auto values = rows.of(QuantityId::InstantaneousFlicker, Channel::UA);
    ASSERT_EQ(values.size(), 10U + 29U);
    EXPECT_EQ(values.front().mUtcNs % kShortTermNs, 31'000'000'000);
    EXPECT_EQ(values[10].mUtcNs % kShortTermNs, 72'000'000'000);
    EXPECT_LE(values.back().mValue, 1e-3);
}
