#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "assess/Assessment.h"
#include "assess/AssessmentText.h"

namespace {
using assess::ValueTable;
using assess::Verdict;

constexpr qint64 kTenth = 100'000'000;
constexpr qint64 kFirst = 1'700'000'000'000'000'000;
constexpr char kLimits[] = "tolerance = 0.1\n[[limit]]\nquantity = 'rms'\nabsolute = 1\n";

/** A measured value: tenths of a second after the first one, and V. */
struct Value
{
    int mTenths;
    double mVolts;
};

ValueTable tableOf(const std::vector<Value>& values)
{
    ValueTable table;
    for (const Value& it : values) {
        table.series({"rms", "UA"}).add({kFirst + it.mTenths * kTenth, it.mVolts});
    }
    table.sort();
    return table;
}

assess::AssessmentResult verdictOn(const ValueTable& expected, const ValueTable& measured,
                                   const std::string& limits = kLimits)
{
    const assess::LimitTable table = assess::parseLimits(limits, "l");
    return assess::Assessment(expected, measured, table, {{230.0, 5.0, 50.0}, {}, false}).result();
}
} // namespace

/** Expected: 230 V each second from 0 to 4 s; the limit is 1 V. */
TEST(VerdictTest, EveryFaultDecides)
{
    struct Case
    {
        const char* mName;
        std::vector<Value> mMeasured;
        Verdict mVerdict;
        double mLargest; ///< error
    };
    const Case cases[] = {
        {"exact", {{0, 230}, {10, 230}, {20, 230}, {30, 230}, {40, 230}}, Verdict::Within, 0},
        {"at the limit",
         {{0, 231}, {10, 229}, {20, 230}, {30, 230}, {40, 230}},
         Verdict::Within,
         1},
        {"too high",
         {{0, 230}, {10, 231.01}, {20, 230}, {30, 230}, {40, 230}},
         Verdict::Beyond,
         1.01},
        {"too low", {{0, 231.5}, {10, 230}, {20, 230}, {30, 227}, {40, 230}}, Verdict::Beyond, -3},
        {"late", {{0, 230}, {12, 230}, {20, 230}, {30, 230}, {40, 230}}, Verdict::Incomplete, 0},
        {"early", {{0, 230}, {8, 230}, {20, 230}, {30, 230}, {40, 230}}, Verdict::Incomplete, 0},
        {"in time", {{0, 230}, {9, 230}, {21, 230}, {30, 230}, {40, 230}}, Verdict::Within, 0},
        {"missing", {{0, 230}, {10, 230}, {30, 230}, {40, 230}}, Verdict::Incomplete, 0},
        {"additional",
         {{0, 230}, {10, 230}, {20, 230}, {30, 230}, {40, 230}, {50, 230}},
         Verdict::Incomplete,
         0},
        {"doubled",
         {{0, 230}, {10, 230}, {11, 230}, {20, 230}, {30, 230}, {40, 230}},
         Verdict::Incomplete,
         0},
        {"beyond and missing", {{0, 230}, {10, 230}, {20, 200}, {40, 230}}, Verdict::Beyond, -30},
    };
    const ValueTable expected = tableOf({{0, 230}, {10, 230}, {20, 230}, {30, 230}, {40, 230}});
    for (const Case& it : cases) {
        const auto result = verdictOn(expected, tableOf(it.mMeasured));
        EXPECT_EQ(result.mVerdict, it.mVerdict) << it.mName;
        EXPECT_EQ(result.isGood(), it.mVerdict == Verdict::Within) << it.mName;
        ASSERT_EQ(result.mSeries.size(), 1U);
        EXPECT_NEAR(result.mSeries[0].mLargest->mError, it.mLargest, 1e-9) << it.mName;
    }
    for (const std::vector<Value>& values : {std::vector<Value>{{0, 230}}, {{0, 230}, {10, 230}}}) {
        EXPECT_EQ(verdictOn(tableOf(values), {}).mVerdict, Verdict::NotObserved);
    }
}

/** An interruption from 2 to 5 s, in which the reference has no value, but the device has. */
TEST(VerdictTest, ValuesInAGapOfTheExpectedOnesAreNotJudged)
{
    const ValueTable expected = tableOf({{0, 230}, {10, 230}, {20, 230}, {50, 230}, {60, 230}});
    std::vector<Value> measured;
    for (int i = 0; i <= 6; ++i) {
        measured.push_back({10 * i, i == 3 || i == 4 ? 0.0 : 230.0});
    }
    EXPECT_EQ(assess::verdictText(verdictOn(expected, tableOf(measured))),
              "good: 5 values within their limits; not judged: 2 values in gaps of the expected "
              "ones");
    measured.push_back({70, 230.0});
    EXPECT_EQ(verdictOn(expected, tableOf(measured)).mVerdict, Verdict::Incomplete) << "at the end";
    for (const auto& [tenths, verdict] : {std::pair(74, Verdict::Incomplete),
                                          {76, Verdict::Within},
                                          {-14, Verdict::Incomplete},
                                          {-16, Verdict::Within}}) {
        ValueTable longer = expected; // with a series that goes on, or that began before
        longer.series({"rms", "UB"}).add({kFirst + tenths * kTenth, 230.0});
        ValueTable device = longer;
        device.series({"rms", "UA"}).add({kFirst + (tenths < 0 ? -10 : 70) * kTenth, 0.0});
        device.sort();
        EXPECT_EQ(verdictOn(longer, device).mVerdict, verdict) << tenths;
        device.series({"rms", "UB"}).add({kFirst + (tenths < 0 ? -1 : 1) * 10 * kTenth, 230.0});
        EXPECT_FALSE(verdictOn(longer, device).isGood()) << "a single value has no interval";
    }
}

/** The worst ten by the ratio of error and limit, the worst first. */
TEST(VerdictTest, WorstValuesAreListedInTheirOrder)
{
    std::vector<Value> expected;
    std::vector<Value> measured;
    for (int i = 0; i < 30; ++i) {
        expected.push_back({10 * i, 230.0});
        const int size = i * 7 % 30; // each of 0 to 29 once
        measured.push_back({10 * i, 230.0 + (i % 2 == 0 ? size : -size)});
    }
    const auto result = verdictOn(tableOf(expected), tableOf(measured));
    ASSERT_EQ(result.mWorst.size(), 10U);
    for (size_t i = 0; i < 10; ++i) {
        EXPECT_NEAR(std::abs(result.mWorst[i].mValue.mError), 29.0 - static_cast<double>(i), 1e-9);
    }
}

/** An event of any kind, from 4 to 4.3 s, lies in three windows of 0.2 s. */
TEST(VerdictTest, NoWindowWithAnEventIsJudged)
{
    for (const char* const kind :
         {"dip-residual", "swell-max", "interruption-residual", "rapid-change-max"}) {
        std::vector<Value> windows;
        for (int i = 0; i <= 50; ++i) {
            windows.push_back({2 * i, 230.0});
        }
        ValueTable table = tableOf(windows);
        const std::string name(kind);
        const std::string duration = name.substr(0, name.rfind('-')) + "-duration";
        table.series({kind, "U"}).add({kFirst + 40 * kTenth, 100.0});
        table.series({duration, "U"}).add({kFirst + 40 * kTenth, 0.3});
        ValueTable unfinished = table; // at the end of the signal
        unfinished.series({duration, "U"}).mSamples.clear();
        const auto open = verdictOn(unfinished, unfinished, std::string(kLimits) + "after = 0\n");
        EXPECT_THAT(assess::verdictText(open), testing::StartsWith("good: 20 values")) << kind;
        const std::string limits = std::string(kLimits) + "after = 0\n[[limit]]\nquantity = '" +
                                   duration + "'\nabsolute = 1\nfrom = 1\n";
        const auto result = verdictOn(table, table, limits);
        for (const assess::SeriesResult& it : result.mSeries) {
            if (it.mKey.mQuantity == "rms") {
                EXPECT_EQ(it.mJudged, 48U) << kind;
                EXPECT_EQ(it.mCompared, 51U) << kind;
            }
        }
        EXPECT_EQ(assess::verdictText(result),
                  "good: 48 values within their limits; not judged: 4 values outside the "
                  "conditions of the limits, 2 series without a limit");
        EXPECT_THAT(
            assess::junitOf(result, assess::parseLimits(limits, "l")),
            testing::AllOf(testing::HasSubstr(R"(timestamp="2023-11-14T22:13:20")"),
                           testing::HasSubstr(R"(tests="5" failures="0" errors="0" skipped="3")")));
    }
}

/** An error of exactly one period is allowed, however many digits the durations have. */
TEST(VerdictTest, ErrorEqualToItsLimitIsWithin)
{
    const auto tableWith = [](double seconds) {
        ValueTable table;
        table.series({"dip-residual", "U"}).add({kFirst, 100.0});
        table.series({"dip-duration", "U"})
            .add({kFirst, std::stod(fmt::format("{:.10g}", seconds))});
        return table;
    };
    const assess::LimitTable limits = assess::readLimits("pq-a");
    for (const double hertz : {50.0, 60.0}) {
        for (const double halfPeriods : {2.0, 23.0, 1441.0, 36001.0, 360001.0}) {
            for (const auto& [periods, verdict] : {std::pair(1.0, Verdict::Within),
                                                   {-1.0, Verdict::Within},
                                                   {1.001, Verdict::Beyond}}) {
                const double seconds = (0.5 * halfPeriods + 2.0) / hertz;
                const ValueTable expected = tableWith(seconds);
                const ValueTable measured = tableWith(seconds - periods / hertz);
                EXPECT_EQ(
                    assess::Assessment(expected, measured, limits, {{230.0, 5.0, hertz}, {}, false})
                        .result()
                        .mVerdict,
                    verdict)
                    << hertz << ' ' << halfPeriods << ' ' << periods;
            }
        }
    }
}

/** A value covers the time before it, which must not overlap an event: here one up to 1 s. */
TEST(VerdictTest, ValuesCountForTheirIntervals)
{
    for (const auto& [quantity, seconds] : {std::pair("rms", 0.2),
                                            {"harmonic-5-3s", 3.0},
                                            {"u2-10min", 600.0},
                                            {"pst", 600.0},
                                            {"plt", 7200.0},
                                            {"frequency-10s", 10.0}}) {
        for (const double share : {0.9, 1.0, 1.1}) {
            const auto stamp = std::llround((1.0 + share * seconds) * 1e9);
            ValueTable table;
            table.series({quantity, "UA"}).add({kFirst + stamp, 50.0});
            table.series({"dip-duration", "UA"}).add({kFirst, 1.0});
            const auto result = verdictOn(
                table, table,
                std::string("tolerance = 1\n[[limit]]\nabsolute = 1\nafter = 0\nquantity = '") +
                    quantity + "'\n");
            EXPECT_EQ(result.isGood(), share > 1.0) << quantity << ' ' << share;
        }
    }
}

/** Limits in percent of a wrong nominal voltage are meaningless. */
TEST(VerdictTest, WrongNominalVoltageIsReported)
{
    struct Case
    {
        std::vector<Value> mExpected;
        const char* mFinding; ///< empty for none
    };
    for (const Case& it :
         {Case{{{0, 230}, {10, 230}}, ""},
          {{{0, 200}, {10, 200}}, ""},
          {{{0, 57.7}, {10, 57.7}}, "expected voltages is 57.7 V, but the nominal"},
          {{{0, 400}, {10, 400}, {20, 400}}, "expected voltages is 400 V"},
          {{{0, 230}, {10, 92}, {20, 92}, {30, 92}}, ""},
          {{{0, 0}, {10, 0}}, ""}}) {
        const ValueTable table = tableOf(it.mExpected);
        std::string found;
        for (const std::string& text : verdictOn(table, table).mFindings) {
            found += text;
        }
        EXPECT_NE(found.find(it.mFinding), std::string::npos) << found;
        EXPECT_EQ(found.empty(), *it.mFinding == '\0') << found;
    }
}

/** A range includes its lower end, not its upper one, and applies to the absolute value. */
TEST(VerdictTest, RangesOfLimits)
{
    struct Case
    {
        double mExpected;
        const char* mRange;
        Verdict mVerdict;
    };
    for (const Case& it : {Case{230, "from = 230\n", Verdict::Within},
                           {229.9, "from = 230\n", Verdict::NotJudged},
                           {230, "to = 230\n", Verdict::NotJudged},
                           {229.9, "to = 230\n", Verdict::Within},
                           {-240, "from = 230\n", Verdict::Within},
                           {-240, "to = 230\n", Verdict::NotJudged},
                           {115, "from = '50 %'\n", Verdict::Within},
                           {115, "to = '50 %'\n", Verdict::NotJudged}}) {
        const ValueTable table = tableOf({{0, it.mExpected}});
        EXPECT_EQ(verdictOn(table, table, std::string(kLimits) + it.mRange).mVerdict, it.mVerdict)
            << it.mExpected << ' ' << it.mRange;
    }
}
