#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <functional>
#include <pugixml.hpp>

#include "SeededRandom.h"
#include "assess/AssessmentPicture.h"
#include "assess/ClockDiagnosis.h"
#include "assess/QuantityNames.h"
#include "assess/SeriesJudge.h"
#include "assess/Steps.h"
#include "assess/TimeFormat.h"
#include "base/JunitFile.h"
#include "base/Numbers.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {
using assess::Sample;
using assess::Series;

constexpr qint64 kPartsMs = 1'000'000;
constexpr qint64 kPartsBeginNs = 1'700'000'000'000 * kPartsMs;

/** Values every 20 ms. */
std::vector<Sample> every20Ms(int count, const std::function<double(double)>& valueAt)
{
    std::vector<Sample> samples;
    for (int i = 0; i < count; ++i) {
        samples.push_back({kPartsBeginNs + i * 20 * kPartsMs, valueAt(0.02 * i)});
    }
    return samples;
}
} // namespace

/** Lost, doubled and late values are all counted, in any order. */
TEST(MatchingTest, RandomFaultsAreCounted)
{
    std::mt19937 random = seededRandom();
    for (int run = 0; run < 50; ++run) {
        Series expected;
        std::vector<Sample> rows;
        assess::MatchCounts counts;
        for (int i = 0; i < 300; ++i) {
            const qint64 ns = kPartsBeginNs + i * 20 * kPartsMs;
            expected.add({ns, double(i)});
            const qint64 jitter = qint64(random() % 1000) * 1000;
            switch (random() % 8) {
                case 0:
                    ++counts.mMissing;
                    break;
                case 1:
                    ++counts.mDoubled;
                    rows.push_back({ns + jitter, double(i)});
                    rows.push_back({ns - 5 * kPartsMs - jitter, -1.0});
                    break;
                case 2:
                    ++counts.mLate;
                    rows.push_back({ns + 2 * kPartsMs + jitter, double(i)});
                    break;
                case 3:
                    ++counts.mEarly;
                    rows.push_back({ns - 2 * kPartsMs - jitter, double(i)});
                    break;
                default:
                    rows.push_back({ns - jitter, double(i)});
            }
        }
        rows.push_back({kPartsBeginNs - 50 * kPartsMs, -1.0});
        rows.push_back({kPartsBeginNs + 300 * 20 * kPartsMs + kPartsMs, -1.0});
        std::shuffle(rows.begin(), rows.end(), random);
        assess::ValueTable table;
        for (const Sample& row : rows) {
            table.series({"rms", "UA"}).add(row);
        }
        table.sort();
        const auto matching = assess::matchInTime(expected, *table.find({"rms", "UA"}), kPartsMs);
        EXPECT_EQ(matching.mCounts.mMissing, counts.mMissing);
        EXPECT_EQ(matching.mCounts.mDoubled, counts.mDoubled);
        EXPECT_EQ(matching.mCounts.mLate, counts.mLate);
        EXPECT_EQ(matching.mCounts.mEarly, counts.mEarly);
        EXPECT_EQ(matching.mCounts.mAdditional, 2U);
        EXPECT_GT(matching.mCounts.mOutOfOrder, 0U);
        EXPECT_EQ(matching.mPairs.size() + counts.mMissing, 300U);
        for (const assess::Pair& pair : matching.mPairs) {
            EXPECT_EQ(pair.mMeasured, pair.mExpected);
        }
    }
}

/** A single value has no interval, so the tolerance decides. */
TEST(MatchingTest, SingleValueIsMatchedWithinTheTolerance)
{
    for (const auto& [offset, pairs] : {std::pair(0, 1), {10, 1}, {-10, 1}, {11, 0}, {-11, 0}}) {
        Series expected;
        Series measured;
        expected.add({kPartsBeginNs, 1.0});
        measured.add({kPartsBeginNs + offset * kPartsMs, 1.0});
        const auto matching = assess::matchInTime(expected, measured, 10 * kPartsMs);
        EXPECT_EQ(matching.mPairs.size(), size_t(pairs)) << offset;
        EXPECT_EQ(matching.mCounts.mMissing + matching.mPairs.size(), 1U);
        EXPECT_EQ(matching.mCounts.mAdditional + matching.mPairs.size(), 1U);
    }
}

/** Finds the position of a step, and no other steps. */
TEST(StepTest, StepsAreDistinguishedFromRampsAndModulation)
{
    struct Case
    {
        const char* mName;
        std::function<double(double)> mValueAt;
        bool mIsAngle;
        std::vector<double> mSizes;
    };
    const auto smooth = [](double seconds) { // over 0.1 s around 1 s
        return std::clamp((seconds - 0.95) / 0.1, 0.0, 1.0);
    };
    const Case cases[] = {
        {"steady", [](double) { return 230.0; }, false, {}},
        {"zero", [](double) { return 0.0; }, false, {}},
        {"ramp", [](double s) { return 230.0 + 20.0 * s; }, false, {}},
        {"modulation",
         [](double s) { return 230.0 * (1.0 + 0.1 * std::cos(12.0 * s)); },
         false,
         {}},
        {"small", [](double s) { return s < 1.0 ? 230.0 : 231.0; }, false, {}},
        {"up", [](double s) { return s < 1.0 ? 200.0 : 220.0; }, false, {20.0}},
        {"from 0", [](double s) { return s < 1.0 ? 0.0 : 220.0; }, false, {220.0}},
        {"filtered", [=](double s) { return 230.0 - 100.0 * smooth(s); }, false, {-100.0}},
        {"slow", [](double s) { return 230.0 - 50.0 * std::clamp(s - 0.5, 0.0, 1.0); }, false, {}},
        {"two",
         [](double s) { return s < 0.5 || s > 1.2 ? 230.0 : 115.0; },
         false,
         {-115.0, 115.0}},
        {"angle", [](double s) { return s < 1.0 ? 175.0 : -175.0; }, true, {10.0}},
        {"turning",
         [](double s) { return assess::wrapped(720.0 * s + (s < 1.0 ? 0.0 : -10.0)); },
         true,
         {-10.0}},
        {"frequency ramp", [](double s) { return assess::wrapped(180.0 * s * s); }, true, {}},
    };
    for (const Case& it : cases) {
        std::vector<double> sizes;
        for (const assess::Step& step :
             assess::findSteps(every20Ms(100, it.mValueAt), it.mIsAngle)) {
            sizes.push_back(std::round(1e6 * step.mSize) / 1e6);
        }
        EXPECT_EQ(sizes, it.mSizes) << it.mName;
    }
}

/** Any frequency and depth that a reporting rate of 50 can follow. */
TEST(StepTest, ModulationHasNoSteps)
{
    for (double hertz = 0.1; hertz < 10.0; hertz += 0.1) {
        for (const double depth : {0.02, 0.05, 0.1}) {
            const auto swing = [&](double s) {
                return depth * std::cos(base::kTwoPi * hertz * s + hertz);
            };
            const auto magnitude = [&](double s) { return 230.0 * (1.0 + swing(s)); };
            const auto angle = [&](double s) { return swing(s) / base::kRadiansPerDegree; };
            EXPECT_EQ(assess::findSteps(every20Ms(500, magnitude), false).size(), 0U) << hertz;
            EXPECT_EQ(assess::findSteps(every20Ms(500, angle), true).size(), 0U) << hertz;
        }
    }
}

/** A time is read back from any format. */
TEST(TimeFormatTest, RandomTimesAreReadBack)
{
    std::mt19937_64 random(seededRandom()());
    const std::pair<const char*, const char*> formats[] = {
        {"iso", "yyyy-MM-ddTHH:mm:ss.zzz"},
        {"%d.%m.%Y %H:%M:%S.%f", "dd.MM.yyyy HH:mm:ss.zzz"},
        {"%Y%m%d%H%M%S%f", "yyyyMMddHHmmsszzz"}};
    for (int i = 0; i < 2000; ++i) {
        const auto ms = qint64(random() % 7'000'000'000'000);
        const QDateTime time = QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
        for (const auto& [format, qtFormat] : formats) {
            const std::string text = time.toString(qtFormat).toStdString();
            EXPECT_EQ(assess::TimeFormat(format).parse(text, '.'), ms * kPartsMs) << text;
        }
        const std::string seconds = QString::number(ms / 1000).toStdString() + "," +
                                    QString("%1").arg(ms % 1000, 3, 10, QChar('0')).toStdString();
        EXPECT_EQ(assess::TimeFormat("s").parse(seconds, ','), ms * kPartsMs) << seconds;
    }
}

TEST(UnitTest, UnitsAreConverted)
{
    struct Case
    {
        const char* mFrom;
        const char* mTo;
        std::optional<double> mFactor;
    };
    for (const Case& it : {Case{"kV", "V", 1e3},
                           {"mA", "A", 1e-3},
                           {"mHz", "Hz", 1e-3},
                           {"MW", "W", 1e6},
                           {"kvar", "var", 1e3},
                           {"us", "s", 1e-6},
                           {"min", "s", 60.0},
                           {"pu", "%", 100.0},
                           {"", "", 1.0},
                           {"Hz/s", "Hz/s", 1.0},
                           {"m%", "%", std::nullopt},
                           {"V", "A", std::nullopt},
                           {"", "V", std::nullopt},
                           {"xV", "V", std::nullopt},
                           {"k", "", std::nullopt}}) {
        EXPECT_EQ(assess::unitFactor(it.mFrom, it.mTo), it.mFactor) << it.mFrom << it.mTo;
    }
    EXPECT_NEAR(*assess::unitFactor("rad", "deg"), 57.295779513, 1e-9);
}

/** The limits of the built-in tables at 230 V, 50 Hz and 50 values per second. */
TEST(LimitsTest, BuiltInTablesHaveTheFiguresOfTheStandards)
{
    struct Case
    {
        const char* mTable;
        assess::SeriesKey mKey;
        double mExpected;
        double mLimit; ///< 0: none
    };
    const Case cases[] = {
        {"pq-a", {"rms", "UA"}, 230.0, 0.23},
        {"pq-a", {"rms-10min", "UA"}, 300.0, 0.23},
        {"pq-a", {"rms", "UA"}, 22.0, 0.0},
        {"pq-a", {"rms", "IA"}, 5.0, 0.0},
        {"pq-a", {"frequency-10s", ""}, 50.0, 0.01},
        {"pq-a", {"dip-residual", "UB"}, 100.0, 0.46},
        {"pq-a", {"dip-start", "UB"}, 0.0, 0.01},
        {"pq-a", {"interruption-duration", "U"}, 1.0, 0.02},
        {"pq-a", {"harmonic-5", "UA"}, 6.0, 0.3},
        {"pq-a", {"harmonic-5-3s", "IA"}, 0.5, 0.05},
        {"pq-a", {"interharmonic-2", "UA"}, 2.0, 0.1},
        {"pq-a", {"u2", "U"}, 2.0, 0.15},
        {"pq-a", {"pst", "UA"}, 1.0, 0.05},
        {"pq-s", {"rms", "UA"}, 230.0, 1.15},
        {"pq-s", {"rms", "UA"}, 45.0, 0.0},
        {"pq-s", {"frequency-10s", ""}, 50.0, 0.05},
        {"pq-s", {"swell-max", "UA"}, 270.0, 2.3},
        {"pq-s", {"dip-duration", "UA"}, 1.0, 0.04},
        {"pq-s", {"harmonic-5", "UA"}, 2.0, 0.15},
        {"pq-s", {"u0", "U"}, 1.0, 0.3},
        {"pmu-p", {"tve", "UA"}, 0.0, 1.0},
        {"pmu-p", {"frequency-pmu", ""}, 50.0, 0.005},
        {"pmu-p", {"rocof", ""}, 0.0, 0.4},
        {"pmu-p", {"step-response-tve", "UA"}, 0.0, 0.04},
        {"pmu-p", {"step-delay", "UA"}, 0.0, 0.005},
        {"pmu-p", {"step-overshoot", "UA"}, 0.0, 5.0},
        {"pmu-m", {"rocof", ""}, 0.0, 0.1},
        {"pmu-m", {"step-response-tve", "UA"}, 0.0, 0.14},
        {"pmu-m", {"step-response-frequency", ""}, 0.0, 0.28},
        {"pmu-m", {"step-overshoot", "UA"}, 0.0, 10.0},
    };
    const assess::Situations nothing{assess::ValueTable()};
    for (const Case& it : cases) {
        const assess::LimitTable limits = assess::readLimits(it.mTable);
        const assess::SeriesJudge judge(it.mKey, limits, {230.0, 5.0, 50.0}, nothing,
                                        20 * kPartsMs);
        const auto value = judge.judge({kPartsBeginNs, it.mExpected, it.mExpected}, nullptr);
        EXPECT_NEAR(value.mLimit, it.mLimit, 1e-9) << it.mTable << " " << assess::nameOf(it.mKey);
    }
}

/** A wave that is measured late, by whole and fractional numbers of intervals. */
TEST(ClockTest, DelaysAreMeasured)
{
    const auto wave = [](double seconds) {
        return std::sin(2.0 * seconds) + std::sin(5.0 * seconds);
    };
    const auto expected = every20Ms(500, wave);
    for (const double delay : {0.0, 0.02, -0.04, 0.105, 0.4, -0.4}) {
        const auto measured = every20Ms(500, [&](double s) { return wave(s - delay); });
        EXPECT_NEAR(assess::delayOf(expected, measured), delay, 1e-9);
    }
    const auto noise = every20Ms(500, [&](double s) { return wave(s) + 0.1 * std::sin(1e4 * s); });
    EXPECT_EQ(assess::delayOf(expected, noise), 0.0);
}

/** Any time zone and any small number of seconds is named; noise is not named. */
TEST(ClockTest, OffsetsOfTheClockAreNamed)
{
    assess::ValueTable expected;
    expected.series({"rms", "UA"}).mSamples =
        every20Ms(1000, [](double s) { return 230.0 + std::sin(0.7 * s); });
    for (const int seconds : {0, 1, -1, 2, 37, -60, 1800, 3600, -19800, 50400, 86400}) {
        assess::ValueTable measured = expected;
        for (Sample& sample : measured.series({"rms", "UA"}).mSamples) {
            sample.mUtcNs += seconds * 1000 * kPartsMs;
            sample.mValue += 0.01 * std::sin(double(sample.mUtcNs % 1'000'003));
        }
        const auto found = assess::diagnoseClock(expected, measured, kPartsMs);
        if (seconds == 0) {
            EXPECT_THAT(found, IsEmpty());
        } else {
            const std::string text = std::string("all time stamps are ") +
                                     (seconds > 0 ? "late" : "early") + " by " +
                                     std::to_string(std::abs(seconds)) + " s";
            EXPECT_THAT(found, ElementsAre(testing::StartsWith(text))) << seconds;
        }
    }
}

/** Any names and texts give a valid file, and the counts are correct. */
TEST(JunitTest, AnyTextMakesAValidFile)
{
    base::JunitFile file;
    base::JunitSuite first = file.addSuite("a<b>\"&'", "all", "2026-11-25T22:00:01");
    first.addTest("good", "c", 1.5);
    first.addTest("bad \x01\n]]>", "c");
    first.fail("t", "m\x02<", "<text>\x1f");
    base::JunitSuite second = file.addSuite("second", "all", "");
    second.addTest("skipped", "c");
    second.skip("why");
    second.addTest("broken", "c");
    second.failToRun("t", "m", "");

    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(file.text().c_str()));
    const pugi::xml_node suite = document.child("testsuites").first_child();
    EXPECT_STREQ(suite.attribute("name").value(), "a<b>\"&'");
    EXPECT_EQ(suite.attribute("tests").as_int(), 2);
    EXPECT_EQ(suite.attribute("failures").as_int(), 1);
    EXPECT_STREQ(suite.attribute("time").value(), "1.500");
    const pugi::xml_node bad = suite.find_child_by_attribute("name", "bad  \n]]>");
    EXPECT_STREQ(bad.child("failure").text().get(), "<text> ");
    EXPECT_STREQ(suite.last_child().name(), "system-err");
    const pugi::xml_node other = suite.next_sibling();
    EXPECT_EQ(other.attribute("id").as_int(), 1);
    EXPECT_EQ(other.attribute("skipped").as_int(), 1);
    EXPECT_EQ(other.attribute("errors").as_int(), 1);
}

/** A constant series and a strongly varying one are both drawn with a margin. */
TEST(AssessmentPictureTest, CurvesFitTheirPanels)
{
    for (const double wild : {0.0, 50.0}) {
        std::vector<assess::JudgedValue> values;
        for (int i = 0; i < 5000; ++i) {
            const double error = wild * std::sin(i);
            values.push_back({kPartsBeginNs + i * 20 * kPartsMs, 230.0, 230.0 + error, error,
                              i % 2 == 0 ? 0.23 : 0.0});
        }
        assess::SeriesResult series;
        series.mKey = {"rms", "UA"};
        series.mUnit = "V";
        const plot::Picture picture = assess::pictureOf(series, values);
        EXPECT_NEAR(picture.mEnd, 99.98, 1e-9);
        ASSERT_EQ(picture.mWhole.size(), 2U);
        for (const plot::Panel& panel : picture.mWhole) {
            EXPECT_LT(panel.mLow, panel.mHigh);
            for (const plot::Curve& curve : panel.mCurves) {
                EXPECT_FALSE(curve.mPoints.empty()) << curve.mLabel;
                EXPECT_LE(curve.mPoints.size(), 4000U);
                for (const plot::Point& point : curve.mPoints) {
                    EXPECT_GT(point.mY, panel.mLow);
                    EXPECT_LT(point.mY, panel.mHigh);
                }
            }
        }
    }
}
