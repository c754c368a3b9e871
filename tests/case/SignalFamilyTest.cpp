#include "generate/SignalFamily.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

namespace {
using generate::FamilyKind;

/** The wave of a family with its defaults and some changed settings. */
generate::WaveParameters waveOf(FamilyKind kind, const generate::Settings& changed)
{
    const generate::SignalFamily& family = generate::familyOf(kind);
    generate::Settings settings;
    for (const generate::FamilyParameter& parameter : family.mParameters) {
        settings[parameter.mName] = parameter.mDefault;
    }
    for (const auto& [name, value] : changed) {
        EXPECT_NE(family.find(name), nullptr) << name;
        settings[name] = value;
    }
    generate::WaveParameters wave;
    family.mApply(settings, wave);
    return wave;
}

constexpr double kRounding = 1e-12;
} // namespace

TEST(SignalFamilyTest, ParametersHaveRanges)
{
    const generate::FamilyParameter& phases = *generate::familyOf(FamilyKind::Event).find("phases");
    for (const double good : {1.0, 2.0, 3.0}) {
        EXPECT_TRUE(phases.accepts(good)) << good;
    }
    for (const double bad : {0.0, 0.999, 2.5, 4.0, double(NAN), double(INFINITY)}) {
        EXPECT_FALSE(phases.accepts(bad)) << bad;
    }
    const generate::FamilyParameter& jump = *generate::familyOf(FamilyKind::Event).find("jump");
    EXPECT_TRUE(jump.accepts(-360.0) && jump.accepts(360.0) && jump.accepts(0.5));
    EXPECT_FALSE(jump.accepts(-360.1) || jump.accepts(360.1));
    EXPECT_EQ(generate::familyOf(FamilyKind::Steady).find("percent"), nullptr);
}

/** The event begins at its angle after the lead; the tail begins with the first period after it. */
TEST(SignalFamilyTest, EventLiesInWholePeriods)
{
    const struct
    {
        double mAngle;
        double mPeriods;
        double mBegin; ///< periods from the first sample
        double mAll;   ///< periods of the file
    } rows[] = {{0, 1, 10, 26},
                {0, 0.5, 10, 26},
                {90, 0.5, 10.25, 26},
                {90, 1, 10.25, 27},
                {270, 0.2, 10.75, 26},
                {270, 0.3, 10.75, 27},
                {359, 10, 10 + 359.0 / 360.0, 36}};
    for (const auto& row : rows) {
        const auto wave =
            waveOf(FamilyKind::Event, {{"angle", row.mAngle}, {"periods", row.mPeriods}});
        ASSERT_EQ(wave.mDisturbances.size(), 1U);
        EXPECT_NEAR(wave.mDisturbances[0].mStart * 50.0, row.mBegin, 1e-9) << row.mAngle;
        EXPECT_NEAR(wave.mDisturbances[0].mDuration * 50.0, row.mPeriods, 1e-9);
        EXPECT_NEAR(wave.mDuration * 50.0, row.mAll, 1e-9) << row.mAngle << ' ' << row.mPeriods;
    }
    const unsigned long channels[] = {0, 0b001, 0b011, 0b111};
    for (const int phases : {1, 2, 3}) {
        const auto wave = waveOf(FamilyKind::Event, {{"phases", phases}, {"percent", 40}});
        EXPECT_EQ(wave.mDisturbances[0].mChannels.to_ulong(), channels[phases]);
        EXPECT_NEAR(wave.mDisturbances[0].mFactor, 0.4, kRounding);
        EXPECT_EQ(waveOf(FamilyKind::Offset, {{"phases", phases}}).mTones[0].mChannels.to_ulong(),
                  (channels[phases] << 4) & 0b0111'0000)
            << "of the currents the first ones";
    }
}

TEST(SignalFamilyTest, StepIsInTheMiddle)
{
    const auto wave =
        waveOf(FamilyKind::Step, {{"seconds", 1.001}, {"percent", 90}, {"jump", -10}});
    ASSERT_EQ(wave.mDisturbances.size(), 1U);
    EXPECT_NEAR(wave.mDisturbances[0].mStart, 0.5, kRounding);
    EXPECT_NEAR(wave.mDisturbances[0].mDuration, 0.5, kRounding);
    EXPECT_NEAR(wave.mDisturbances[0].mFactor, 0.9, kRounding);
    EXPECT_EQ(wave.mDisturbances[0].mPhaseJump, -10.0);
    EXPECT_EQ(wave.mDisturbances[0].mChannels.to_ulong(), 0b0111'0111U);
}

TEST(SignalFamilyTest, RampHasItsDuration)
{
    const struct
    {
        double mTo;
        double mRate;
        double mChange; ///< s
    } rows[] = {{52, 0.5, 4}, {45, 2, 2.5}, {52, 0, 0}};
    for (const auto& row : rows) {
        const auto wave =
            waveOf(FamilyKind::Frequency, {{"to", row.mTo}, {"rate", row.mRate}, {"hold", 1.5}});
        EXPECT_NEAR(wave.mDuration, 3.0 + row.mChange, kRounding);
        ASSERT_EQ(wave.mCourse.size(), 2U);
        EXPECT_EQ(wave.mCourse[0].mSeconds, 1.5);
        EXPECT_EQ(wave.mCourse[0].mHertz, 50.0);
        EXPECT_NEAR(wave.mCourse[1].mSeconds, 1.5 + row.mChange, kRounding);
        EXPECT_EQ(wave.mCourse[1].mHertz, row.mTo);
    }
}

/** Currents are modulated like the voltages, unless they have their own values. */
TEST(SignalFamilyTest, ModulationOfTheCurrents)
{
    const auto same = waveOf(FamilyKind::Modulation, {{"percent", 10}, {"radians", 0.1}});
    ASSERT_EQ(same.mModulations.size(), 1U);
    EXPECT_EQ(same.mModulations[0].mChannels.to_ulong(), 0b0111'0111U);
    EXPECT_NEAR(same.mModulations[0].mDepth, 0.1, kRounding);
    EXPECT_EQ(same.mModulations[0].mPhaseDepth, 0.1);
    for (const generate::Settings& own :
         {generate::Settings{{"current-percent", 0}}, {{"current-radians", 0}}}) {
        generate::Settings settings = own;
        settings.insert({{"percent", 10}, {"radians", 0.1}});
        const auto wave = waveOf(FamilyKind::Modulation, settings);
        ASSERT_EQ(wave.mModulations.size(), 2U);
        EXPECT_EQ(wave.mModulations[0].mChannels.to_ulong(), 0b0000'0111U);
        EXPECT_EQ(wave.mModulations[1].mChannels.to_ulong(), 0b0111'0000U);
        EXPECT_NEAR(wave.mModulations[1].mDepth, own.count("current-percent") > 0 ? 0.0 : 0.1,
                    kRounding);
        EXPECT_EQ(wave.mModulations[1].mPhaseDepth, own.count("current-radians") > 0 ? 0.0 : 0.1);
    }
}

/** Two changes per cycle, each from one half of the percentage to the other. */
TEST(SignalFamilyTest, FlickerAndUnbalance)
{
    const auto flicker = waveOf(FamilyKind::Flicker, {{"changes", 120}, {"percent", 3}});
    ASSERT_EQ(flicker.mModulations.size(), 1U);
    EXPECT_NEAR(flicker.mModulations[0].mHertz, 1.0, kRounding);
    EXPECT_NEAR(flicker.mModulations[0].mDepth, 0.015, kRounding);
    EXPECT_EQ(flicker.mModulations[0].mChannels.to_ulong(), 0b0000'0111U);

    const auto wave = waveOf(FamilyKind::Unbalance, {{"negative", 5}, {"zero", 3}});
    const double peak = generate::WaveParameters().mChannels[0].mAmplitude;
    std::complex<double> positive;
    std::complex<double> negative;
    std::complex<double> zero;
    for (size_t i = 0; i < 3; ++i) {
        const auto phasor = std::polar(wave.mChannels[i].mAmplitude / peak,
                                       wave.mChannels[i].mPhase * std::acos(-1.0) / 180.0);
        const auto turn = std::polar(1.0, double(i) * std::acos(-0.5));
        positive += phasor * turn / 3.0;
        negative += phasor / turn / 3.0;
        zero += phasor / 3.0;
    }
    EXPECT_NEAR(std::abs(positive), 1.0, 1e-9);
    EXPECT_NEAR(std::abs(negative), 0.05, 1e-9);
    EXPECT_NEAR(std::abs(zero), 0.03, 1e-9);
}

/** Only orders with a value exist. */
TEST(SignalFamilyTest, HarmonicsAndTones)
{
    const auto harmonics = waveOf(FamilyKind::Harmonics, {{"h2", 0.5}, {"h50", 1}, {"phases", 2}});
    ASSERT_EQ(harmonics.mHarmonics.size(), 2U);
    EXPECT_EQ(harmonics.mHarmonics[0].mOrder, 2);
    EXPECT_NEAR(harmonics.mHarmonics[0].mRatio, 0.005, kRounding);
    EXPECT_EQ(harmonics.mHarmonics[1].mOrder, 50);
    EXPECT_EQ(harmonics.mHarmonics[1].mChannels.to_ulong(), 0b0000'0011U);
    EXPECT_NEAR(harmonics.mDuration, 0.02, kRounding) << "one period";

    const auto offset = waveOf(FamilyKind::Offset, {{"angle", 45}, {"percent", 80}});
    ASSERT_EQ(offset.mTones.size(), 1U);
    EXPECT_NEAR(offset.mTones[0].mStart, 10.125 / 50.0, kRounding);
    EXPECT_EQ(offset.mTones[0].mHertz, 0.0);
    EXPECT_EQ(offset.mTones[0].mPhase, 90.0);
    EXPECT_NEAR(offset.mTones[0].mRatio, 0.8, kRounding);
    const auto transient = waveOf(FamilyKind::Transient, {{"hertz", 600}, {"tau", 0.01}});
    ASSERT_EQ(transient.mTones.size(), 1U);
    EXPECT_EQ(transient.mTones[0].mHertz, 600.0);
    EXPECT_EQ(transient.mTones[0].mTimeConstant, 0.01);
    EXPECT_EQ(transient.mTones[0].mChannels.to_ulong(), 0b0000'0111U);
}

/** No sum of the peaks of all parts may exceed 32 bits. */
TEST(WaveParametersTest, PeakIsTheSumOfAllParts)
{
    constexpr double kMax = 2147483647.0;
    generate::WaveParameters wave;
    wave.mChannels[0].mAmplitude = 1e9;
    wave.mModulations.push_back({1.0, 0.0, 0.0, generate::ModulationShape::Sine, 1});
    wave.mTones.push_back({0.0, 75.0, 0.1, 0.0, generate::kLasting, 1});
    wave.mHarmonics.push_back({3, 0.2, 0.0, 1});
    const double limit = (kMax / 1e9 - 0.1) / 1.2 - 1.0;
    for (const double depth : {limit - 1e-6, -limit + 1e-6}) {
        wave.mModulations[0].mDepth = depth;
        EXPECT_EQ(generate::problemOf(wave), "") << depth;
    }
    for (const double depth : {limit + 1e-6, -limit - 1e-6}) {
        wave.mModulations[0].mDepth = depth;
        EXPECT_NE(generate::problemOf(wave), "") << depth;
    }
}
