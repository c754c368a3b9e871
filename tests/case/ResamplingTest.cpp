#include <gtest/gtest.h>

#include "ClosedForm.h"
#include "SampleStep.h"
#include "SeededRandom.h"
#include "resampling/Interpolator.h"
#include "resampling/PhaseFollower.h"
#include "resampling/Schedule.h"

namespace {
constexpr double kSeconds = 3.0;
constexpr double kPeriod = 0.02;

/** 100 dB below the peak. */
constexpr double kLargestError = ClosedForm::kPeak * 1e-5;

std::vector<double> uniformTimes(double rate, double seconds)
{
    std::vector<double> times;
    for (int i = 0; i / rate <= seconds; ++i) {
        times.push_back(i / rate);
    }
    return times;
}

/** A signal as recorded, and its interpolation to other instants. */
struct Recorded
{
    Recorded(const ClosedForm& signal, const std::vector<double>& seconds)
        : mTimes(seconds, false), mColumns(3)
    {
        for (const double time : seconds) {
            for (int phase = 0; phase < 3; ++phase) {
                mColumns[phase].mValues.push_back(signal.valueAt(time, phase));
            }
        }
    }

    std::optional<resampling::PhaseTrack> track() const
    {
        const resampling::PhaseMeter meter(
            mTimes, resampling::positiveSequence(
                        {&mColumns[0].mValues, &mColumns[1].mValues, &mColumns[2].mValues}));
        return resampling::PhaseFollower(meter, 50.0).follow();
    }

    resampling::SampleTimes mTimes;
    std::vector<resampling::SourceColumn> mColumns;
};

/** The largest error of the lines that are far enough from jumps and ends. */
double errorOf(const ClosedForm& signal, Recorded& recorded, const resampling::Schedule& schedule,
               double distance)
{
    resampling::Interpolator interpolator(recorded.mTimes, recorded.mColumns, 18'000.0);
    std::vector<double> values;
    double largest = 0.0;
    for (size_t line = 0; line < schedule.mLineCount; ++line) {
        const double seconds = schedule.secondsOf(line);
        if (signal.isQuiet(seconds, recorded.mTimes.end(), distance)) {
            interpolator.valuesAt(seconds, values);
            for (int phase = 0; phase < 3; ++phase) {
                largest =
                    std::max(largest, std::abs(values[phase] - signal.valueAt(seconds, phase)));
            }
        }
    }
    return largest;
}

/** Largest phase error at the beginnings of the periods, in degrees. */
double phaseErrorOf(const ClosedForm& signal, const resampling::Schedule& schedule)
{
    double least = 1e9;
    double most = -1e9;
    for (size_t period = 0; period < schedule.mPeriods.size(); ++period) {
        const double seconds = schedule.mPeriods[period].mStart;
        if (signal.isQuiet(seconds, kSeconds, 3.0 * kPeriod)) {
            const double degrees = 360.0 * (signal.cyclesAt(seconds) - static_cast<double>(period));
            least = std::min(least, degrees);
            most = std::max(most, degrees);
        }
    }
    return most - least;
}

struct Case
{
    const char* mName;
    ClosedForm mSignal;
    double mPhaseDegrees; ///< allowed
};

/** Otherwise the list of tests shows bytes. */
void PrintTo(const Case& testCase, std::ostream* out)
{
    *out << testCase.mName;
}

const Case kCases[] = {
    {"steady", {50.02, 0.0, 0.0, 0.0}, 0.2},
    {"ramp", {50.02, 1.0, 0.0, 0.0}, 0.2},
    {"sag", {50.02, 0.0, 1.2034, 1.7071}, 0.2},
    {"rampAndSag", {50.02, 1.0, 1.2034, 1.7071}, 2.0},
};
} // namespace

class ResamplingTest : public testing::TestWithParam<std::tuple<Case, double>>
{
};

/** Both ways of timing the lines, compared with the signal itself. */
TEST_P(ResamplingTest, IsExact)
{
    const auto& [testCase, rate] = GetParam();
    const ClosedForm& signal = testCase.mSignal;
    Recorded recorded(signal, uniformTimes(rate, kSeconds));
    const auto steady = resampling::scheduleKeepingTime(50.0F, 0.0, kSeconds);
    EXPECT_DOUBLE_EQ(steady.secondsOf(1000), 1000 * 55'555e-9);
    EXPECT_LE(errorOf(signal, recorded, steady, 50.0 / rate), kLargestError);

    const auto track = recorded.track();
    ASSERT_TRUE(track);
    const auto schedule = resampling::scheduleKeepingPhase(*track, 0.0, kSeconds);
    EXPECT_LE(errorOf(signal, recorded, schedule, 3 * kPeriod), kLargestError);
    EXPECT_LE(phaseErrorOf(signal, schedule), testCase.mPhaseDegrees);
}

INSTANTIATE_TEST_SUITE_P(Signals, ResamplingTest,
                         testing::Combine(testing::ValuesIn(kCases),
                                          testing::Values(4'800.0, 20'000.0)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).mName) + "At" +
                                    std::to_string(int(std::get<1>(test.param)));
                         });

namespace {
/** Largest error between two instants, in steps that do not coincide with samples. */
double errorBetween(const ClosedForm& signal, Recorded& recorded, double from, double to)
{
    resampling::Interpolator interpolator(recorded.mTimes, recorded.mColumns, 18'000.0);
    std::vector<double> values;
    double largest = 0.0;
    for (double seconds = from; seconds < to; seconds += 0.0000371) {
        interpolator.valuesAt(seconds, values);
        for (int phase = 0; phase < 3; ++phase) {
            largest = std::max(largest, std::abs(values[phase] - signal.valueAt(seconds, phase)));
        }
    }
    return largest;
}
} // namespace

/** Tones up to 0.4 of the rate, at instants between samples; the recorder has its own clock. */
TEST(RecorderTest, AnyBandLimitedSignalIsExactBetweenItsSamples)
{
    std::mt19937 random = seededRandom();
    const auto number = [&random](double min, double max) {
        return std::uniform_real_distribution<double>(min, max)(random);
    };
    for (int round = 0; round < 20; ++round) {
        const double rate = number(1'000.0, 17'000.0);
        std::vector<std::array<double, 2>> tones(5); // Hz and the phase in periods
        for (auto& tone : tones) {
            tone = {number(0.0, 0.4 * rate), number(0.0, 1.0)};
        }
        const auto valueAt = [&tones](double seconds) {
            double sum = 0.0;
            for (const auto& [hertz, phase] : tones) {
                sum += std::sin(ClosedForm::kTwoPi * (hertz * seconds + phase));
            }
            return sum;
        };
        std::vector<resampling::SourceColumn> columns(1);
        const std::vector<double> times = uniformTimes(rate, 400.0 / rate);
        for (const double seconds : times) {
            columns[0].mValues.push_back(valueAt(seconds));
        }
        const resampling::SampleTimes sampleTimes(times, true);
        resampling::Interpolator interpolator(sampleTimes, columns, 18'000.0);
        std::vector<double> values;
        for (int i = 0; i < 200; ++i) {
            const double seconds = number(60.0, 340.0) / rate;
            interpolator.valuesAt(seconds, values);
            ASSERT_NEAR(values[0], valueAt(seconds), 1e-5) << rate << ' ' << seconds;
        }
    }
}

/** The window rejects constants and harmonics. */
TEST(PhaseMeterTest, SeesTheFundamentalAlone)
{
    std::mt19937 random = seededRandom();
    const auto number = [&random](double min, double max) {
        return std::uniform_real_distribution<double>(min, max)(random);
    };
    for (int round = 0; round < 50; ++round) {
        const double hertz = number(45.0, 65.0);
        const double cycles = number(-0.5, 0.5);
        const double constant = number(-1.0, 1.0);
        const auto order = static_cast<double>(2 + random() % 20);
        resampling::ComplexSignal signal;
        const std::vector<double> times = uniformTimes(4800.0, 0.2);
        for (const double seconds : times) {
            const double phase = ClosedForm::kTwoPi * (hertz * seconds + cycles);
            signal.push_back(std::polar(7.0, phase) + std::polar(2.0, order * phase) + constant);
        }
        const resampling::SampleTimes sampleTimes(times, true);
        const double at = number(0.05, 0.15);
        const auto phasor = resampling::PhaseMeter(sampleTimes, signal).measure(at, hertz);
        ASSERT_TRUE(phasor);
        EXPECT_NEAR(phasor->mAmplitude, 7.0, 1e-3) << hertz;
        EXPECT_NEAR(std::remainder(phasor->mCycles - cycles - hertz * at, 1.0), 0.0, 1e-5) << hertz;
    }
}

/** A clock of whole microseconds, a change of the rate, a gap, and a skew. */
TEST(RecorderTest, CoarseTimeStampsAreHandled)
{
    const ClosedForm signal;
    // Several samples share a tick of 1 ms; with 1.5 or 2.1 ticks per step, none do.
    for (const double ticks : {1e6, 1e3, 7e3, 1e4}) {
        std::vector<double> seconds = uniformTimes(4800.0, 1.0);
        for (double& time : seconds) {
            time = std::floor(time * ticks) / ticks;
        }
        Recorded rounded(signal, uniformTimes(4800.0, 1.0));
        rounded.mTimes = resampling::SampleTimes(seconds, false);
        EXPECT_EQ(rounded.mTimes.segments().size(), 1U);
        EXPECT_LE(errorBetween(signal, rounded, 0.1, 0.9), ClosedForm::kPeak * 1e-3);
    }

    std::vector<double> halved = uniformTimes(4000.0, 0.5);
    for (int i = 1; i <= 1'000; ++i) {
        halved.push_back(0.5 + i / 2'000.0);
    }
    const resampling::SampleTimes ofTwoRates(halved, false);
    EXPECT_EQ(ofTwoRates.segments().size(), 2U);
    EXPECT_EQ(ofTwoRates.clockTick(), 0.0);

    std::vector<double> changing = uniformTimes(4800.0, 0.5);
    const double change = changing.back();
    for (int i = 1; i <= 10'000; ++i) {
        changing.push_back(change + i / 20'000.0);
    }
    for (int i = 1; i <= 2'000; ++i) {
        changing.push_back(change + 0.6 + i / 4'800.0);
    }
    Recorded changed(signal, changing);
    EXPECT_EQ(changed.mTimes.segments().size(), 4U); // the gap is one of them
    EXPECT_LE(errorBetween(signal, changed, 0.1, 0.4), kLargestError);
    EXPECT_LE(errorBetween(signal, changed, 0.4, 0.6), ClosedForm::kPeak * 1e-2);
    EXPECT_LE(errorBetween(signal, changed, 0.6, 0.9), kLargestError);
    EXPECT_LE(errorBetween(signal, changed, 1.2, 1.4), kLargestError);

    Recorded skewed(signal, uniformTimes(4800.0, 1.0));
    skewed.mColumns[1].mSkewSeconds = 70e-6;
    for (size_t i = 0; i < skewed.mColumns[1].mValues.size(); ++i) {
        skewed.mColumns[1].mValues[i] = signal.valueAt(static_cast<double>(i) / 4800.0 + 70e-6, 1);
    }
    EXPECT_LE(errorBetween(signal, skewed, 0.1, 0.9), kLargestError);
}

/**
 * If nothing can be measured, also at the ends, the frequency is extrapolated, which is reported.
 */
TEST(RecorderTest, GapsAtTheEndsAreReported)
{
    Recorded recorded({}, uniformTimes(4800.0, kSeconds));
    for (resampling::SourceColumn& column : recorded.mColumns) {
        std::fill(column.mValues.begin(), column.mValues.begin() + 2400, 0.0);
        std::fill(column.mValues.begin() + 7200, column.mValues.end(), 0.0);
    }
    const auto gaps = recorded.track()->gaps();
    ASSERT_EQ(gaps.size(), 2U);
    EXPECT_EQ(gaps[0].first, 0.0);
    EXPECT_NEAR(gaps[0].second, 0.5, 3 * kPeriod);
    EXPECT_NEAR(gaps[1].first, 1.5, 3 * kPeriod);
    EXPECT_EQ(gaps[1].second, recorded.mTimes.end());
}

/**
 * The phase is extrapolated through a deep sag, and measured in one that lasts longer than 50
 * periods. The jumps of the phase at both ends are not in the track.
 */
TEST(RecorderTest, FaultsAreBridged)
{
    const struct
    {
        double mEnd; ///< of a sag from 0.6 s on
        double mBridgedTo;
    } rows[] = {{1.0, 1.0}, {1.5, 1.5}, {2.4, 0.6}};
    for (const auto& row : rows) {
        const ClosedForm signal{50.02, 0.0, 0.6, row.mEnd};
        const auto track = Recorded(signal, uniformTimes(4800.0, kSeconds)).track();
        ASSERT_TRUE(track);
        ASSERT_FALSE(track->gaps().empty());
        EXPECT_NEAR(track->gaps()[0].first, 0.6, 3 * kPeriod) << row.mEnd;
        EXPECT_NEAR(track->gaps()[0].second, row.mBridgedTo, 5 * kPeriod) << row.mEnd;
        for (double seconds = 0.1; seconds < kSeconds; seconds += 0.1) {
            EXPECT_NEAR(track->cyclesAt(seconds) - track->cyclesAt(0.1),
                        signal.cyclesAt(seconds) - signal.cyclesAt(0.1), 0.01)
                << row.mEnd << ' ' << seconds;
        }
    }
}

/** Content above half the output's rate is removed, even at instants of samples. */
TEST(RecorderTest, FastSourcesAreFiltered)
{
    const std::vector<double> seconds = uniformTimes(36'000.0, 0.1);
    std::vector<resampling::SourceColumn> columns(1);
    for (const double time : seconds) {
        columns[0].mValues.push_back(std::cos(6.28318530717958647692 * 9'300.0 * time));
    }
    const resampling::SampleTimes times(seconds, true);
    resampling::Interpolator interpolator(times, columns, 18'000.0);
    std::vector<double> values;
    for (size_t i = 200; i < 3'000; ++i) {
        interpolator.valuesAt(seconds[i], values);
        ASSERT_EQ(values[0], columns[0].mValues[i]) << i;
        interpolator.valuesAt(seconds[i] + 11e-6, values);
        ASSERT_NEAR(values[0], 0.0, 1e-5) << i;
    }
}

/**
 * A signal that is odd about its ends continues as its point reflection: exact up to the last
 * sample.
 */
TEST(RecorderTest, EndsAreMirrored)
{
    const auto valueAt = [](double seconds) {
        return 3.0 + std::sin(ClosedForm::kTwoPi * 50.0 * seconds);
    };
    const std::vector<double> seconds = uniformTimes(4'800.0, 0.1);
    std::vector<resampling::SourceColumn> columns(1);
    std::transform(seconds.begin(), seconds.end(), std::back_inserter(columns[0].mValues), valueAt);
    const resampling::SampleTimes times(seconds, true);
    resampling::Interpolator interpolator(times, columns, 18'000.0);
    std::vector<double> values;
    for (double at = 7e-6; at < 0.1; at += 37e-6) {
        interpolator.valuesAt(at, values);
        ASSERT_NEAR(values[0], valueAt(at), 1e-5) << at;
    }
}

/**
 * Triangular numbers lie on a parabola, so the cubics differ from it only at the ends: tangents.
 */
TEST(PhaseTrackTest, IsSmoothUpToItsEnds)
{
    const resampling::PhaseTrack track(2.0, 0.5, {0.0, 1.0, 3.0, 6.0}, {});
    const std::pair<double, double> rows[] = {{1.5, -1.0},    {2.0, 0.0},    {2.25, 0.4375},
                                              {2.5, 1.0},     {2.75, 1.875}, {3.0, 3.0},
                                              {3.25, 4.4375}, {3.5, 6.0},    {4.0, 9.0}};
    for (const auto& [seconds, cycles] : rows) {
        EXPECT_NEAR(track.cyclesAt(seconds), cycles, 1e-12);
        EXPECT_NEAR(track.secondsAt(cycles), seconds, 1e-9);
    }
}
