#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "CommandRunner.h"
#include "MeterRun.h"
#include "SampleStep.h"
#include "base/Numbers.h"
#include "measure/PeriodMeters.h"
#include "measure/UtcText.h"
#include "measure/WindowMeans.h"

using measure::Channel;
using measure::Interval;
using measure::QuantityId;

namespace {
constexpr double kVolts = 230.0;
constexpr double kFifth = 0.06;
constexpr double kHighest = 0.01; ///< of the 49th harmonic
constexpr double kNegative = 0.02;
constexpr double kZero = 0.03;
constexpr double kLagDegrees = 30.0; ///< of the currents
const double kRms = kVolts * std::sqrt(1.0 + kFifth * kFifth + kHighest * kHighest);

/** A signal in closed form on lines of a nominal frequency; its own frequency may differ. */
struct Content
{
    double mHz;
    double mHzPerSecond = 0.0;
    double mUnbalance = 0.0;  ///< 1: with a negative and a zero sequence
    bool mIsOnePhase = false; ///< the others are 0
    double mFaultBegin = 1e9; ///< s
    double mFaultEnd = 1e9;   ///< meanwhile UA is at 40 % and 30 degrees behind

    double cyclesAt(double t) const { return t * (mHz + mHzPerSecond * t / 2.0); }

    bool isFault(double t) const { return t >= mFaultBegin && t < mFaultEnd; }

    double valueAt(size_t channel, double t) const
    {
        const size_t phase = channel % 4;
        if (phase == 3 || (mIsOnePhase && phase > 0)) {
            return 0.0;
        }
        const bool isHit = isFault(t) && channel == 0;
        const double lag = channel < 4 ? 0.0 : kLagDegrees;
        const double angle =
            base::kTwoPi * cyclesAt(t) - (lag + (isHit ? 30.0 : 0.0)) * base::kRadiansPerDegree;
        const double shift = base::kTwoPi * static_cast<double>(phase) / 3.0;
        const double own = angle - shift;
        const double unbalance =
            kNegative * std::cos(angle + shift + 1.0) + kZero * std::cos(angle + 2.0);
        const double sum = std::cos(own) + kFifth * std::cos(5.0 * own + 0.3) +
                           kHighest * std::cos(49.0 * own) + mUnbalance * unbalance;
        return std::sqrt(2.0) * (channel < 4 ? kVolts : kVolts / 46.0) * (isHit ? 0.4 : 1.0) * sum;
    }
};

/** The frequency at which lines are played: the step of whole ns makes it slightly higher. */
double playedHz(double hz)
{
    return 1e9 / kSamplesPerPeriod / sampleStepOf(static_cast<float>(hz));
}
/** Measures seconds of content on lines of lineHz, played by the rule of the device. */
MeasuredRows measured(const Content& content, double lineHz, double seconds,
                      std::vector<std::string> groups, qint64 beginUtcNs = 0, double maxHertz = 1e9)
{
    const double step = sampleStepOf(static_cast<float>(lineHz)) * base::kSecondsPerNanosecond;
    std::vector<double> times;
    for (size_t i = 0; i < static_cast<size_t>(seconds / step); ++i) {
        times.push_back(static_cast<double>(i) * step);
    }
    measure::MeterSettings settings;
    settings.mBeginUtcNs = beginUtcNs;
    settings.mMaxHertz = maxHertz;
    settings.mNominalHz = lineHz > 55.0 ? 60.0 : 50.0;
    measure::PeriodMeters meters(measure::Selection(std::move(groups)), settings);
    if (content.mHz != playedHz(lineHz)) {
        return runMeter(meters, times,
                        [&](size_t channel, double t) { return content.valueAt(channel, t); });
    }
    std::array<std::array<double, kSamplesPerPeriod>, kChannelCount> period{}; // for long signals
    for (size_t channel = 0; channel < period.size(); ++channel) {
        for (size_t i = 0; i < period[channel].size(); ++i) {
            period[channel][i] = content.valueAt(channel, static_cast<double>(i) * step);
        }
    }
    return runMeter(meters, times, [&](size_t channel, double t) {
        const auto line = static_cast<size_t>(std::lround(t / step));
        const bool isHit = channel == 0 && content.isFault(t);
        return isHit ? content.valueAt(channel, t) : period[channel][line % kSamplesPerPeriod];
    });
}

} // namespace

/** Signals in step with the lines or not, balanced or not, have the expected values. */
TEST(MeasureTest, AgreesWithTheClosedForm)
{
    struct Row
    {
        double mLineHz;
        Content mContent;
    };
    const Row rows[] = {
        {50.0, {playedHz(50.0)}},
        {60.0, {playedHz(60.0)}},
        {45.0, {playedHz(45.0)}},
        {50.0, {49.97}},
        {50.0, {45.0}},
        {50.0, {57.5}},
        {60.0, {59.9, 0.0, 1.0}},
        {50.0, {playedHz(50.0), 0.0, 1.0}},
        {50.0, {49.9, 0.0, 0.0, true}},
        {50.0, {50.0, 1.0}},
    };
    for (const auto& [lineHz, content] : rows) {
        SCOPED_TRACE(testing::Message() << content.mHz << " Hz, " << content.mHzPerSecond
                                        << " Hz/s on lines of " << lineHz << " Hz");
        const MeasuredRows found = measured(content, lineHz, 2.0,
                                            {"rms-half", "rms", "thd", "harmonics",
                                             "interharmonics", "frequency", "unbalance", "power"});
        const bool isBalanced = content.mUnbalance == 0.0;
        if (isBalanced) {
            for (const QuantityId id : {QuantityId::RmsHalf, QuantityId::Rms}) {
                const auto values = found.of(id, Channel::UA);
                ASSERT_GE(values.size(), id == QuantityId::Rms ? 7U : 160U);
                for (const auto& row : values) {
                    ASSERT_NEAR(row.mValue / kRms, 1.0, 10e-6) << row.mUtcNs;
                }
            }
            for (const auto& row : found.of(QuantityId::Harmonic, Channel::IA, 5)) {
                ASSERT_NEAR(row.mValue, 100.0 * kFifth, 0.002);
            }
            for (const auto& row : found.of(QuantityId::Interharmonic, Channel::UA, 1)) {
                ASSERT_NEAR(row.mValue, 0.0, 0.002);
            }
        }
        for (const auto& row : found.of(QuantityId::Frequency, Channel::None)) {
            const double middle = static_cast<double>(row.mUtcNs) * 1e-9 - 0.5 / content.mHz;
            ASSERT_NEAR(row.mValue, content.mHz + content.mHzPerSecond * middle,
                        content.mHzPerSecond == 0.0 ? 1e-4 : 1e-3)
                << row.mUtcNs;
        }
        const auto negative = found.of(QuantityId::NegativeVoltageUnbalance, Channel::U);
        ASSERT_GE(negative.size(), 7U);
        if (!content.mIsOnePhase) {
            EXPECT_NEAR(negative[3].mValue, 100.0 * kNegative * content.mUnbalance, 0.002);
            EXPECT_NEAR(found.of(QuantityId::ZeroVoltageUnbalance, Channel::U)[3].mValue,
                        100.0 * kZero * content.mUnbalance, 0.002);
        }
        if (isBalanced) {
            const auto cosine = [](double order) {
                return std::cos(order * kLagDegrees * base::kRadiansPerDegree);
            };
            const double whole = kVolts * kVolts / 46.0;
            const double watts = whole * (cosine(1.0) + kFifth * kFifth * cosine(5.0) +
                                          kHighest * kHighest * cosine(49.0));
            EXPECT_NEAR(found.of(QuantityId::ActivePower, Channel::A)[3].mValue / watts, 1.0, 2e-5);
            EXPECT_NEAR(found.of(QuantityId::ReactivePower, Channel::A)[3].mValue, whole / 2.0,
                        2e-5 * whole);
        }
    }
}

/** Half-period values are right up to the period before a fault and from the one after it. */
TEST(MeasureTest, FaultDoesNotChangeTheValuesAroundIt)
{
    for (const double hz : {playedHz(50.0), 49.93}) {
        const Content content{hz, 0.0, 0.0, false, 0.5, 0.8};
        const MeasuredRows found = measured(content, 50.0, 1.5, {"rms-half", "frequency"});
        size_t inFault = 0;
        for (const auto& row : found.of(QuantityId::RmsHalf, Channel::UA)) {
            const double end = static_cast<double>(row.mUtcNs) * 1e-9;
            const double begin = end - 1.0 / hz;
            if (end <= 0.5 || begin >= 0.8) {
                ASSERT_NEAR(row.mValue / kRms, 1.0, 20e-6) << hz << ' ' << end;
            } else if (begin >= 0.5 && end <= 0.8) {
                ASSERT_NEAR(row.mValue / (0.4 * kRms), 1.0, 20e-6) << hz << ' ' << end;
                ++inFault;
            }
        }
        EXPECT_GE(inFault, 27U) << hz;
        for (const auto& row : found.of(QuantityId::Frequency, Channel::None)) {
            ASSERT_NEAR(row.mValue, hz, 1e-3) << row.mUtcNs;
        }
    }
}

/** Windows start again at full 10 minutes; the overlapping window belongs to the time before. */
TEST(MeasureTest, AggregatesFromFullTenMinutesOfUtc)
{
    constexpr qint64 kMarkNs = 1'700'000'400'000'000'000; // a multiple of 600 s
    constexpr qint64 kBefore = 4'130'000'000;
    const MeasuredRows found =
        measured({playedHz(50.0)}, 50.0, 608.13, {"rms", "frequency"}, kMarkNs - kBefore);
    const auto basic = found.of(QuantityId::Rms, Channel::UA);
    size_t ending = 0;
    for (const auto& row : basic) {
        const qint64 sinceMark = row.mUtcNs - kMarkNs;
        ending += sinceMark > 0 && sinceMark < 399'000'000 ? 1 : 0;
    }
    EXPECT_EQ(ending, 2U) << "the window that goes on, and the first that begins";
    const auto tenMinutes = found.of(QuantityId::Rms, Channel::UA, 0, Interval::TenMinutes);
    ASSERT_EQ(tenMinutes.size(), 1U) << "the first part of 10 minutes is not whole";
    EXPECT_EQ(tenMinutes[0].mUtcNs, kMarkNs + 600'000'000'000);
    EXPECT_NEAR(tenMinutes[0].mValue / kRms, 1.0, 1e-6);
    const auto threeSeconds = found.of(QuantityId::Rms, Channel::UA, 0, Interval::ThreeSeconds);
    ASSERT_GE(threeSeconds.size(), 3U);
    EXPECT_NEAR(static_cast<double>(threeSeconds[1].mUtcNs - kMarkNs), 1.87e9, 1e6)
        << "goes on across the mark";
    EXPECT_NEAR(static_cast<double>(threeSeconds[2].mUtcNs - kMarkNs), 3.0e9, 1e6);
    const auto tenSeconds = found.of(QuantityId::FrequencyTenSeconds, Channel::None);
    ASSERT_EQ(tenSeconds.size(), 60U);
    EXPECT_EQ(tenSeconds[0].mUtcNs, kMarkNs + 10'000'000'000);
    EXPECT_NEAR(tenSeconds[0].mValue, playedHz(50.0), 1e-6);
}

/** With the 49th harmonic in the band or not, thd covers the same orders as the rows. */
TEST(MeasureTest, ThdCoversTheHarmonicsWithRows)
{
    for (const double lastOrder : {49.15, 49.05}) {
        const MeasuredRows found = measured({playedHz(50.0)}, 50.0, 0.3, {"thd", "harmonics"}, 0,
                                            lastOrder * playedHz(50.0));
        double squares = 0.0;
        for (int order = 2; order <= 50; ++order) {
            for (const auto& row : found.of(QuantityId::Harmonic, Channel::UA, order)) {
                squares += row.mValue * row.mValue;
            }
        }
        const double highest = lastOrder > 49.1 ? kHighest : 0.0;
        EXPECT_NEAR(std::sqrt(squares), 100.0 * std::hypot(kFifth, highest), 1e-4);
        EXPECT_NEAR(found.of(QuantityId::Thd, Channel::UA).at(0).mValue, std::sqrt(squares), 1e-9);
    }
}

/** 3 of 15 windows are in a fault: the roots of the mean squares of their own values. */
TEST(MeasureTest, AggregatesTheValuesOfWindows)
{
    const double window = 10.0 / playedHz(50.0);
    const Content content{playedHz(50.0), 0.0, 0.0, false, 2.0 * window, 5.0 * window};
    const MeasuredRows found = measured(content, 50.0, 3.1, {"rms", "thd", "unbalance", "power"},
                                        1'700'000'400'000'000'000);
    const std::complex<double> fault = std::polar(0.4, -30.0 * base::kRadiansPerDegree);
    const double watts = kVolts * kVolts / 46.0 * std::cos(kLagDegrees * base::kRadiansPerDegree);
    const double negative = std::abs(fault - 1.0);
    struct Row
    {
        double mOutside;
        double mInFault;
        QuantityId mId;
        Channel mChannel;
    };
    const Row rows[] = {
        {kRms, 0.4 * kRms, QuantityId::Rms, Channel::UA},
        {0.0, 100.0 * negative / std::abs(fault + 2.0), QuantityId::NegativeVoltageUnbalance,
         Channel::U},
        {0.0, kVolts * negative / 3.0, QuantityId::NegativeSequence, Channel::U},
        {watts * std::tan(base::kTwoPi / 12.0), 0.0, QuantityId::ReactivePower, Channel::A},
        {kRms * kRms / 46.0, 0.4 * kRms * kRms / 46.0, QuantityId::ApparentPower, Channel::A},
    };
    for (const auto& [outside, inFault, id, channel] : rows) {
        const double squares = (12.0 * outside * outside + 3.0 * inFault * inFault) / 15.0;
        const bool isPower = measure::quantityOf(id).mGroup == std::string("power");
        const double mean = isPower ? (12.0 * outside + 3.0 * inFault) / 15.0 : std::sqrt(squares);
        const auto values = found.of(id, channel, 0, Interval::ThreeSeconds);
        ASSERT_EQ(values.size(), 1U) << measure::quantityOf(id).mName;
        EXPECT_NEAR(values[0].mValue / mean, 1.0, 1e-4) << measure::quantityOf(id).mName;
    }
}

/** A percentage is that of the windows that have it, a power factor that of averaged powers. */
TEST(MeasureTest, AggregatesQuantitiesThatSomeWindowsLack)
{
    measure::WindowMeans means;
    const auto add = [&means](Channel channel, double active, double apparent) {
        means.add({0, active, {QuantityId::ActivePower}, channel});
        means.add({0, apparent, {QuantityId::ApparentPower}, channel});
        if (apparent > 0.0) {
            means.add({0, active / apparent, {QuantityId::PowerFactor}, channel});
            means.add({0, active / 10.0, {QuantityId::Thd}, channel});
        }
    };
    const std::pair<double, double> windows[] = {{0.0, 0.0}, {30.0, 50.0}, {10.0, 50.0}};
    for (const auto& [active, apparent] : windows) {
        add(Channel::A, active, apparent);
        add(Channel::B, -7.0, 10.0);
    }
    RowCollector output;
    means.end(Interval::TenMinutes, 1, output);
    const auto valueOf = [&output](QuantityId id, Channel channel) {
        const auto rows = output.mRows.of(id, channel, 0, Interval::TenMinutes);
        return rows.size() == 1 ? rows[0].mValue : NAN;
    };
    EXPECT_DOUBLE_EQ(valueOf(QuantityId::ActivePower, Channel::A), 40.0 / 3.0);
    EXPECT_DOUBLE_EQ(valueOf(QuantityId::PowerFactor, Channel::A), 0.4);
    EXPECT_DOUBLE_EQ(valueOf(QuantityId::Thd, Channel::A), std::sqrt(5.0)) << "3 and 1";
    EXPECT_DOUBLE_EQ(valueOf(QuantityId::PowerFactor, Channel::B), -0.7);
    RowCollector next;
    add(Channel::B, 3.0, 10.0);
    means.end(Interval::TenMinutes, 2, next);
    EXPECT_EQ(next.mRows.mRows.size(), 4U) << "nothing of A, whose interval is over";
    EXPECT_EQ(next.mRows.mRows[0].mValue, 3.0);
}

TEST(MeasureTest, EveryNameIdentifiesItsRow)
{
    size_t count = 0;
    for (const measure::Quantity& quantity : measure::quantities()) {
        for (int order = quantity.mFirstOrder; order <= quantity.mLastOrder; ++order) {
            for (int interval = 0; interval < (quantity.mHasIntervals ? 3 : 1); ++interval) {
                const measure::RowKind kind{quantity.mId, order, static_cast<Interval>(interval)};
                const auto found = measure::findRowKind(measure::nameOf(kind));
                ASSERT_TRUE(found && *found == kind) << measure::nameOf(kind);
                ++count;
            }
        }
    }
    EXPECT_GT(count, 300U);
    for (const char* const wrong : {"", "rm", "harmonic", "harmonic-1", "harmonic-51",
                                    "rms-half-3s", "harmonic-2-", "interharmonic-50", "rms-4s"}) {
        EXPECT_FALSE(measure::findRowKind(wrong)) << wrong;
    }
}

TEST(MeasureTest, ReadsAndWritesUtc)
{
    measure::UtcText text;
    for (const char* const good :
         {"1970-01-01T00:00:00.000000000Z", "2026-11-25T20:00:00.123456789Z",
          "2100-02-28T23:59:59.999999999Z"}) {
        const auto utc = measure::parseUtc(good);
        ASSERT_TRUE(utc) << good;
        EXPECT_EQ(text.of(*utc), good);
    }
    EXPECT_EQ(measure::parseUtc("2026-01-01 00:00:00.5 UTC"),
              measure::parseUtc("2026-01-01T00:00:00.5Z"));
    for (const char* const wrong :
         {"", "2026-01-01", "2026-13-01T00:00:00Z", "2026-01-01T00:00:60Z",
          "2026-01-01T00:00:00.1234567890Z", "1969-12-31T23:59:59Z", "2026-01-01T00:00:00+01:00"}) {
        EXPECT_FALSE(measure::parseUtc(wrong)) << wrong;
    }
}

class MeasureCommandTest : public testing::Test
{
protected:
    CommandResult run(const std::string& arguments) const
    {
        return mRunner.run(split(VX_CASE + (" " + arguments)));
    }

    CommandRunner mRunner;
};

/** The value of the truth replaces the measured one if there is no dip in the window. */
TEST_F(MeasureCommandTest, ClosedFormWinsWhereItHolds)
{
    ASSERT_EQ(run("generate --signal dip-70-25-50hz --truth t.json -o s.csv").mExitCode, 0);
    const CommandResult result =
        run("measure s.csv --truth t.json --begin 2026-01-01T00:00:00Z --quantities rms,unbalance");
    ASSERT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mErrors, "");
    const std::string& rows = result.mOutput;
    EXPECT_EQ(rows.substr(0, rows.find('\n')), "utc,quantity,channel,value,unit,origin");
    EXPECT_NE(rows.find("\n2026-01-01T00:00:00.199998000Z,rms,UA,229.9999156,V,closed form\n"),
              std::string::npos)
        << rows;
    EXPECT_NE(rows.find("\n2026-01-01T00:00:00.399996000Z,rms,UA,160.99995"), std::string::npos);
    EXPECT_NE(rows.find("00.799992000Z,rms,UA,198.5"), std::string::npos) << "half of it is a dip";
    ASSERT_EQ(run("generate --duration 0.1 -o other.csv").mExitCode, 0);
    const CommandResult other = run("measure other.csv --truth t.json -o m.csv");
    EXPECT_EQ(other.mExitCode, 2);
    EXPECT_NE(other.mErrors.find("other.csv: has 1800 lines, but t.json is for 18000"),
              std::string::npos)
        << other.mErrors;
}

/** The file with the truth has all orders, the measured thd those up to 50. */
TEST_F(MeasureCommandTest, ClosedFormOfThdEndsWithOrder50)
{
    ASSERT_EQ(run("generate --duration 0.3 --harmonic 60:0.05:0:0 --harmonic 50:0.03:0:0 "
                  "--harmonic 2:0.04:0:0 --truth t.json -o s.csv")
                  .mExitCode,
              0);
    const CommandResult result = run("measure s.csv --truth t.json --quantities thd");
    EXPECT_NE(result.mOutput.find("Z,thd,UA,5,%,closed form\n"), std::string::npos) << result;
}

/** In an interruption there are 3 counts, whose percentages are those of their rounding. */
TEST_F(MeasureCommandTest, NegligibleFundamentalHasNoPercentages)
{
    ASSERT_EQ(run("generate --disturbance 0.2:0.8:0.00001:0:0,1,2,4,5,6 -o s.csv").mExitCode, 0);
    const CommandResult result =
        run("measure s.csv --begin 2026-01-01T00:00:00Z --quantities rms,thd,unbalance");
    for (const char* const quantity : {"rms,UA", "sequence-zero,I"}) {
        EXPECT_NE(result.mOutput.find(std::string("00.599994000Z,") + quantity), std::string::npos);
    }
    for (const char* const quantity : {"thd,UA", "thd,IA", "u2,U", "i0,I"}) {
        EXPECT_NE(result.mOutput.find(std::string("00.199998000Z,") + quantity), std::string::npos);
        EXPECT_EQ(result.mOutput.find(std::string("00.599994000Z,") + quantity), std::string::npos);
    }
}

TEST_F(MeasureCommandTest, ReportsErrorsOfOptions)
{
    ASSERT_EQ(run("generate --duration 0.1 --truth t.json -o s.csv").mExitCode, 0);
    ASSERT_EQ(run("generate --duration 0.1 --amplitudes 300000,325269,325269,0,7071,7071,7071,0 "
                  "--truth other.json -o other.csv")
                  .mExitCode,
              0);
    const std::pair<const char*, const char*> rows[] = {
        {"--quantities rms,harmonic", "'harmonic': expected names of rms-half,"},
        {"--nominal 230,5", "'230,5': expected V,A,HZ with 50 or 60 Hz"},
        {"--nominal 230,0,50", "'230,0,50': expected V,A,HZ"},
        {"--nominal 230,5,16.7", "with 50 or 60 Hz"},
        {"--begin yesterday", "'yesterday': expected a time in UTC"},
        {"--wide --json", "excludes"},
        {"-o s.csv", "s.csv"},
        {"--truth t.json -o t.json", "t.json"},
        {"--truth none.json", "none.json"},
        {"--truth other.json", "other.json does not belong to this signal: the rms-half of UA at"},
        {"--class M --rate 7", "--rate: "},
        {"--thresholds 90,110", "'90,110': expected percent of the nominal voltage"},
        {"--thresholds 99,110,5", "expected percent"},
        {"--thresholds 90,101,5", "expected percent"},
        {"--thresholds 5,110,90", "expected percent"},
    };
    for (const auto& [options, message] : rows) {
        const CommandResult result = run(std::string("measure s.csv ") + options);
        EXPECT_EQ(result.mExitCode, 2) << options;
        EXPECT_NE(result.mErrors.find(message), std::string::npos) << options << result.mErrors;
    }
    const CommandResult channels = run("measure s.csv --channels 0=1");
    EXPECT_EQ(channels.mExitCode, 1);
    EXPECT_NE(channels.mErrors.find("s.csv: is a value file"), std::string::npos);
}

/** A wide table and JSON hold the values of the long one. */
TEST_F(MeasureCommandTest, AllTablesHaveTheSameValues)
{
    ASSERT_EQ(run("generate --duration 0.5 -o s.csv").mExitCode, 0);
    const std::string command = "measure s.csv --begin 2026-01-01T00:00:00Z --quantities unbalance";
    const CommandResult wide = run(command + " --wide");
    EXPECT_EQ(wide.mOutput.substr(0, wide.mOutput.find(',', 30)),
              "utc,origin,u2 U %,u2-3s U %,u2-10min U %");
    EXPECT_EQ(std::count(wide.mOutput.begin(), wide.mOutput.end(), '\n'), 3) << wide.mOutput;
    const CommandResult json = run(command + " --json");
    EXPECT_EQ(json.mOutput.substr(0, json.mOutput.find(",\"value\"")),
              R"({"utc":"2026-01-01T00:00:00.199998000Z","quantity":"u2","channel":"U")");
}

/** A recording at its own rate is measured like the value file that it was exported from. */
TEST_F(MeasureCommandTest, MeasuresRecordingsOfOtherDevices)
{
    mRunner.writeFile("r.csv", [] {
        const Content content{49.97};
        std::string text = "t [s],UA [V],UB [V],UC [V]\n";
        for (size_t i = 0; i < 10000; ++i) {
            const double t = static_cast<double>(i) / 6400.0;
            text += std::to_string(t);
            for (size_t channel = 0; channel < 3; ++channel) {
                text += ',' + std::to_string(content.valueAt(channel, t));
            }
            text += '\n';
        }
        return text;
    }());
    const CommandResult result = run("measure r.csv --nominal 230,5,50 --quantities rms,frequency");
    ASSERT_EQ(result.mExitCode, 0) << result;
    EXPECT_NE(result.mErrors.find("channel 4 (current A) is 0"), std::string::npos);
    EXPECT_EQ(result.mOutput.find(",IA,"), std::string::npos) << "nothing of what is not there";
    const size_t row = result.mOutput.find(",rms,UC,");
    ASSERT_NE(row, std::string::npos);
    EXPECT_NEAR(std::stod(result.mOutput.substr(row + 8)) / kRms, 1.0, 10e-6);
    const size_t frequency = result.mOutput.find(",frequency,,");
    EXPECT_NEAR(std::stod(result.mOutput.substr(frequency + 12)), 49.97, 1e-4);
}

/** Each record of the driver is a step after the one before it, and none is written twice. */
TEST_F(MeasureCommandTest, RefusesRecordingsWithBrokenTime)
{
    struct Case
    {
        size_t mFrom;       ///< index of a record
        int mSteps;         ///< that it comes too late, and all after it
        double mSlower;     ///< its steps and those of all after it, as a factor
        const char* mError; ///< empty: none
    };
    for (const Case& it : {Case{0, 0, 1.0, ""},
                           {1800, 0, 2.5, ""},
                           {1800, 1, 1.0, "samples are missing for 0.000111 s after 0.099944 s"},
                           {1800, 3, 1.5, "samples are missing for 0.000250 s after 0.099944 s"},
                           {4096, 360, 1.0, "samples are missing for 0.020056 s after 0.227500 s"},
                           {1800, -360, 1.0, "the time stamps fall at 0.100000 s"}}) {
        std::string bytes;
        for (size_t i = 0; i < 9000; ++i) {
            const double after = i < it.mFrom ? 0.0 : double(i + 1 - it.mFrom);
            const double steps =
                double(i) + after * (it.mSlower - 1.0) + (after > 0.0 ? it.mSteps : 0);
            SampleRecord record{1'700'000'000, quint32(std::lround(steps / 18000 * 1e9)), 0, 0, {}};
            record.mValues[0] = qint32(325'269 * std::sin(base::kTwoPi * double(i) / 360));
            bytes.append(reinterpret_cast<const char*>(&record), sizeof record);
        }
        mRunner.writeFile("r.bin", bytes);
        const CommandResult result = run("measure r.bin --nominal 230,5,50 --quantities rms");
        EXPECT_EQ(result.mExitCode, it.mError[0] == 0 ? 0 : 1) << result;
        EXPECT_NE(result.mErrors.find(it.mError), std::string::npos) << result.mErrors;
    }
}

/** An empty or partly wrong table is not written silently. */
TEST_F(MeasureCommandTest, ReportsQuantitiesWithoutRows)
{
    ASSERT_EQ(run("generate --signal steady-50hz -o period.csv").mExitCode, 0);
    const CommandResult period = run("measure period.csv --quantities rms-half,rms,flicker");
    EXPECT_EQ(period.mExitCode, 0) << period;
    EXPECT_NE(period.mErrors.find("no rows of rms, flicker: the signal is too short"),
              std::string::npos)
        << period.mErrors;

    std::string text = "t [s],UA [V]\n";
    for (int i = 0; i < 6400; ++i) {
        text += i < 3200 || i >= 3840 ? std::to_string(i / 6400.0) + ",1\n" : "";
    }
    mRunner.writeFile("gap.csv", text);
    const CommandResult gap = run("measure gap.csv --quantities rms");
    EXPECT_EQ(gap.mExitCode, 1) << gap;
    EXPECT_NE(gap.mErrors.find("gap.csv: samples are missing for 0.100156 s after 0.499844 s"),
              std::string::npos)
        << gap.mErrors;
}
