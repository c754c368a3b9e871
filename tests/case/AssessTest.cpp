#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "SeededRandom.h"
#include "assess/Assessment.h"
#include "assess/QuantityNames.h"
#include "base/Numbers.h"

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {
using assess::Sample;
using assess::SeriesKey;
using assess::ValueTable;
using assess::Verdict;

constexpr qint64 kSecond = 1'000'000'000;
constexpr qint64 kBegin = 1'700'000'000 * kSecond;
constexpr qint64 kFrame = kSecond / 50;
constexpr double kHertz = 50.01; // angles rotate, so a delay is visible
constexpr assess::Nominal kNominal{230.0, 5.0, 50.0};

struct Wave
{
    const char* mChannel;
    double mRms;
    double mDegrees;
};
constexpr Wave kWaves[] = {{"UA", 230.0, 0.0}, {"UB", 220.0, -120.0}, {"UC", 240.0, 120.0},
                           {"IA", 5.0, -30.0}, {"IB", 4.0, -150.0},   {"IC", 6.0, 90.0}};

/** From 4 s to 4.3 s, the voltage of A is at 50 %. */
bool isInDip(qint64 ns)
{
    return ns >= kBegin + 4 * kSecond && ns < kBegin + 4 * kSecond + 3 * kSecond / 10;
}

double magnitudeAt(const Wave& wave, qint64 ns)
{
    return wave.mRms * (std::string(wave.mChannel) == "UA" && isInDip(ns) ? 0.5 : 1.0);
}

/** The expected values of 10 s with a slightly high frequency and one dip. */
ValueTable expectedTable()
{
    ValueTable table;
    for (qint64 ns = kBegin; ns <= kBegin + 10 * kSecond; ns += kFrame) {
        const double seconds = double(ns - kBegin) * 1e-9;
        for (const Wave& wave : kWaves) {
            table.series({"phasor-magnitude", wave.mChannel}).add({ns, magnitudeAt(wave, ns)});
            table.series({"phasor-angle", wave.mChannel})
                .add(
                    {ns, std::remainder(wave.mDegrees + 360.0 * (kHertz - 50.0) * seconds, 360.0)});
            table.series({"rms-half", wave.mChannel}).add({ns, magnitudeAt(wave, ns)});
        }
        table.series({"frequency-pmu", ""}).add({ns, kHertz});
        table.series({"rocof", ""}).add({ns, 0.0});
    }
    for (const Wave& wave : kWaves) {
        for (qint64 ns = kBegin; ns <= kBegin + 10 * kSecond; ns += kSecond / 5) {
            table.series({"harmonic-5", wave.mChannel}).add({ns, 3.0});
        }
    }
    table.series({"dip-residual", "UA"}).add({kBegin + 4 * kSecond, 115.0});
    table.series({"dip-duration", "UA"}).add({kBegin + 4 * kSecond, 0.3});
    return table;
}

/** Replaces each sample of the series whose names begin with `begin`. */
ValueTable changed(const ValueTable& table, const std::string& begin,
                   const std::function<Sample(Sample)>& change)
{
    ValueTable result;
    for (const auto& [key, series] : table.all()) {
        for (const Sample& sample : series.mSamples) {
            const bool isMeant = assess::nameOf(key).rfind(begin, 0) == 0;
            result.series(key).add(isMeant ? change(sample) : sample);
        }
    }
    result.sort();
    return result;
}

ValueTable without(const ValueTable& table, const std::string& begin,
                   const std::function<bool(qint64)>& isGone)
{
    ValueTable result;
    for (const auto& [key, series] : table.all()) {
        for (const Sample& sample : series.mSamples) {
            if (assess::nameOf(key).rfind(begin, 0) != 0 || !isGone(sample.mUtcNs)) {
                result.series(key).add(sample);
            }
        }
    }
    return result;
}

/** Exchanges the values of two channels. */
ValueTable swapped(const ValueTable& table, const std::string& a, const std::string& b)
{
    ValueTable result;
    for (const auto& [key, series] : table.all()) {
        const std::string& channel = key.mChannel;
        result.series({key.mQuantity, channel == a ? b : channel == b ? a : channel}) = series;
    }
    return result;
}

assess::AssessmentResult assessed(const ValueTable& measured, const std::string& limits,
                                  const std::set<std::string>& quantities = {})
{
    static const ValueTable kExpected = expectedTable();
    const assess::LimitTable table = assess::readLimits(limits);
    return assess::Assessment(kExpected, measured, table, {kNominal, quantities, false}).result();
}

const assess::SeriesResult& seriesOf(const assess::AssessmentResult& result, const SeriesKey& key)
{
    const auto found = std::find_if(result.mSeries.begin(), result.mSeries.end(),
                                    [&key](const auto& it) { return it.mKey == key; });
    if (found == result.mSeries.end()) {
        throw std::runtime_error("no series " + assess::nameOf(key));
    }
    return *found;
}
} // namespace

/** A simulated device: each value has an error that is a part of its own limit, up or down. */
TEST(DeviceTest, TwiceTheLimitIsFoundEverywhereAndHalfOfItNowhere)
{
    std::mt19937 random = seededRandom();
    const ValueTable expected = expectedTable();
    for (const char* const name : {"pmu-p", "pmu-m", "pq-a", "pq-s"}) {
        const assess::LimitTable limits = assess::readLimits(name);
        const assess::Assessment exact(expected, expected, limits, {kNominal, {}, false});
        EXPECT_EQ(exact.result().mVerdict, Verdict::Within) << name;
        for (const double share : {0.5, 2.0}) {
            ValueTable measured;
            for (const auto& [key, series] : expected.all()) {
                const auto values = exact.valuesOf(key);
                for (size_t i = 0; i < values.size(); ++i) {
                    const double error =
                        share * values[i].mLimit * (random() % 2 == 0 ? 1.0 : -1.0);
                    measured.series(key).add({values[i].mUtcNs, values[i].mExpected + error});
                }
            }
            const auto result =
                assess::Assessment(expected, measured, limits, {kNominal, {}, false}).result();
            EXPECT_EQ(result.mVerdict, share < 1.0 ? Verdict::Within : Verdict::Beyond) << name;
            EXPECT_THAT(result.mDiagnoses, IsEmpty()) << name << ": noise has no cause";
            for (const assess::SeriesResult& it : result.mSeries) {
                if (share < 1.0 || !assess::isComputed(it.mKey.mQuantity)) {
                    EXPECT_EQ(it.mBeyond, share < 1.0 ? 0 : it.mJudged)
                        << name << " " << assess::nameOf(it.mKey);
                }
            }
        }
    }
}

/** The total vector error includes both: 2 % of magnitude, or 0.02 rad, are twice its limit. */
TEST(DeviceTest, VectorErrorHasMagnitudeAndAngle)
{
    struct Case
    {
        const char* mSeries;
        double mFactor;
        double mDegrees;
        double mPercent;
    };
    const double radian = 180.0 / base::kPi;
    for (const Case& it : {Case{"phasor-magnitude", 1.02, 0.0, 2.0},
                           {"phasor-angle", 1.0, 0.02 * radian, 2.0},
                           {"phasor-magnitude", 0.995, 0.0, 0.5},
                           {"phasor-angle", 1.0, -0.005 * radian, 0.5}}) {
        const auto measured = changed(expectedTable(), it.mSeries, [&it](Sample sample) {
            return Sample{sample.mUtcNs, sample.mValue * it.mFactor + it.mDegrees};
        });
        const auto result = assessed(measured, "pmu-p");
        const assess::SeriesResult& series = seriesOf(result, {"tve", "UB"});
        EXPECT_NEAR(series.mLargest->mMeasured, it.mPercent, 1e-3) << it.mSeries;
        EXPECT_EQ(series.mBeyond, it.mPercent > 1.0 ? series.mJudged : 0) << it.mSeries;
        EXPECT_GT(series.mJudged, 450U);
    }
}

/** Each fault is bad, and named among the findings or the diagnoses. */
TEST(DeviceTest, FaultsAreNamed)
{
    const ValueTable good = expectedTable();
    const auto late = [](double seconds) {
        return [seconds](Sample it) {
            return Sample{it.mUtcNs + std::llround(seconds * 1e9), it.mValue};
        };
    };
    const auto times = [](double factor) {
        return [factor](Sample it) { return Sample{it.mUtcNs, it.mValue * factor}; };
    };
    const auto turned = [](double degrees) {
        return [degrees](Sample it) {
            return Sample{it.mUtcNs, std::remainder(it.mValue + degrees, 360.0)};
        };
    };
    struct Case
    {
        const char* mLimits;
        ValueTable mMeasured;
        const char* mText;
    };
    const Case cases[] = {
        {"pmu-p", changed(good, "phasor-angle", turned(-32.4)), "all angles: late by 1.8 ms"},
        {"pmu-p", changed(good, "phasor-angle", turned(90.0)), "a sine instead of a cosine?"},
        {"pmu-p", changed(good, "phasor-angle UC", turned(180.0)),
         "phasor-angle UC: 180 degrees off: wrong sign"},
        {"pmu-p", swapped(good, "UB", "UC"), "UB and UC are swapped"},
        {"pmu-p", swapped(good, "IA", "IC"), "IA and IC are swapped"},
        {"pmu-p", swapped(swapped(good, "UA", "UB"), "UB", "UC"), "UA has the values of U"},
        {"pmu-p", changed(good, "phasor-magnitude UA", times(1.02)),
         "phasor-magnitude UA: 1.02 times what is expected: the ratio of a transformer"},
        {"pq-a", changed(good, "rms-half", times(std::sqrt(3.0))),
         "rms-half UA, rms-half UB, rms-half UC: 1.7321 times what is expected: phase to phase"},
        {"pq-a", changed(good, "rms-half UA", times(1e-3)), "values in kilo-units?"},
        {"pq-a", changed(good, "rms-half UC", times(std::sqrt(2.0))),
         "peak values instead of rms?"},
        {"pq-a", changed(good, "", late(1.0)), "all time stamps are late by 1 s"},
        {"pq-a", changed(good, "", late(-7200.0)),
         "all time stamps are early by 7200 s: a local time"},
        {"pq-a", changed(good, "", late(18.0)), "GPS time instead of UTC?"},
        {"pmu-p", changed(good, "frequency-pmu", late(0.005)),
         "frequency-pmu: time stamps late by 5 ms"},
        {"pq-a", changed(good, "rms-half", late(0.1)), "rms-half UA: late by about 100 ms"},
        {"pmu-p", without(good, "phasor", [](qint64 ns) { return ns == kBegin + kSecond; }),
         "lost at 2023-11-14T22:13:21.000000000Z: phasor-angle IA, "},
        {"pq-a", without(good, "rms-half UB", [](qint64 ns) { return ns >= kBegin + 9 * kSecond; }),
         "lost 51 times from 2023-11-14T22:13:29.000000000Z to 2023-11-14T22:13:30.000000000Z: "
         "rms-half UB"},
        {"pq-a", without(good, "dip", [](qint64) { return true; }),
         "missing event at 2023-11-14T22:13:24.000000000Z: dip UA"},
        {"pq-a", changed(good, "dip", late(2.0)),
         "additional event at 2023-11-14T22:13:26.000000000Z: dip UA"},
    };
    for (const Case& it : cases) {
        const auto result = assessed(it.mMeasured, it.mLimits);
        EXPECT_FALSE(result.isGood()) << it.mText;
        std::vector<std::string> texts = result.mFindings;
        texts.insert(texts.end(), result.mDiagnoses.begin(), result.mDiagnoses.end());
        EXPECT_THAT(texts, Contains(HasSubstr(it.mText)));
    }
    EXPECT_THAT(assessed(good, "pq-a").mDiagnoses, IsEmpty());
    EXPECT_THAT(assessed(good, "pq-a").mFindings, IsEmpty());
}

/** Values that are measured twice, or out of order, are compared once. */
TEST(DeviceTest, ValuesAreMatchedByTheirTimes)
{
    ValueTable measured = expectedTable();
    auto& samples = measured.series({"rms-half", "UB"}).mSamples;
    samples.insert(samples.begin() + 100, {samples[100].mUtcNs + 1'000'000, 500.0});
    auto counts = seriesOf(assessed(measured, "pq-a"), {"rms-half", "UB"});
    EXPECT_EQ(counts.mCounts.mDoubled, 1U);
    EXPECT_EQ(counts.mBeyond, 0U) << "the value at the right time was compared";
    EXPECT_EQ(counts.mVerdict, Verdict::Incomplete);

    for (const double seconds : {0.0005, 0.0015, -0.0015}) {
        const auto shifted = changed(expectedTable(), "frequency-pmu", [seconds](Sample it) {
            return Sample{it.mUtcNs + std::llround(seconds * 1e9), it.mValue};
        });
        counts = seriesOf(assessed(shifted, "pmu-p"), {"frequency-pmu", ""});
        EXPECT_EQ(counts.mCounts.mLate, seconds > 0.001 ? 501U : 0U);
        EXPECT_EQ(counts.mCounts.mEarly, seconds < -0.001 ? 501U : 0U);
    }
}

/** A phasor of 0 has no angle. Its frames are sent all the same, and each in time. */
TEST(DeviceTest, InterruptionHasMagnitudesOnly)
{
    const auto isGone = [](qint64 ns) {
        return ns > kBegin + 5 * kSecond && ns < kBegin + 6 * kSecond;
    };
    const ValueTable expected = without(expectedTable(), "phasor-angle", isGone);
    const ValueTable late = changed(expected, "phasor-angle UA", [](Sample it) {
        return Sample{it.mUtcNs + kFrame / 4, it.mValue};
    });
    ValueTable doubled = expected;
    doubled.series({"phasor-angle", "UA"}).add({kBegin, 0.0});
    doubled.sort();
    const auto isFrame = [](qint64 ns) { return ns == kBegin + 5 * kSecond; };
    for (const auto& [measured, verdict] :
         {std::pair(expected, Verdict::Within),
          {expectedTable(), Verdict::Within},
          {late, Verdict::Incomplete},
          {doubled, Verdict::Incomplete},
          {without(expected, "phasor", isGone), Verdict::Incomplete},
          {without(expected, "phasor-angle", isFrame), Verdict::Incomplete}}) {
        const assess::LimitTable limits = assess::readLimits("pmu-m");
        const auto result =
            assess::Assessment(expected, measured, limits, {kNominal, {"tve"}, false}).result();
        EXPECT_EQ(result.mVerdict, verdict) << assess::verdictText(result);
    }
}

/** Values that could not be compared are never good. */
TEST(DeviceTest, UnobservedValuesAreNotGood)
{
    const ValueTable good = expectedTable();
    const auto noPhasors = without(good, "phasor", [](qint64) { return true; });
    EXPECT_EQ(assessed(noPhasors, "pmu-p").mVerdict, Verdict::NotObserved);
    EXPECT_EQ(seriesOf(assessed(noPhasors, "pmu-p"), {"tve", "UA"}).mVerdict, Verdict::NotObserved);
    EXPECT_EQ(assessed({}, "pq-a", {"harmonics"}).mVerdict, Verdict::NotObserved);
    EXPECT_EQ(assessed(good, "pq-a", {"phasors"}).mVerdict, Verdict::NoLimit);
    EXPECT_FALSE(assessed(good, "pq-a", {"phasors"}).isGood());

    // A limit whose condition is never met judges nothing.
    const assess::LimitTable limits = assess::parseLimits(
        "tolerance = 0.01\n[[limit]]\nquantity = 'rms-half'\nfrom = 1000\nabsolute = 1\n", "l");
    const auto result =
        assess::Assessment(good, good, limits, {kNominal, {"rms-half"}, false}).result();
    EXPECT_EQ(result.mVerdict, Verdict::NotJudged);
    EXPECT_THAT(assess::verdictText(result), testing::StartsWith("NOT OBSERVED: no value"));
}

/** The expected values of one case, and what was measured in a whole night. */
TEST(DeviceTest, CaseIsAssessedWithinItsNight)
{
    ValueTable night = expectedTable();
    const auto isOutside = [](qint64 ns) {
        return ns < kBegin + 3 * kSecond || ns > kBegin + 6 * kSecond;
    };
    ValueTable play = without(night, "", isOutside);
    play.series({"frequency-10s", ""}).add({kBegin + 5 * kSecond, 50.0});
    night.series({"frequency-10s", ""}).add({kBegin + 5 * kSecond + kFrame, 50.0}); // in time
    const assess::LimitTable limits = assess::readLimits("pq-a");
    EXPECT_EQ(assess::Assessment(play, night, limits, {kNominal, {}, true}).result().mVerdict,
              Verdict::Within);
    EXPECT_EQ(assess::Assessment(play, night, limits, {kNominal, {}, false}).result().mVerdict,
              Verdict::Incomplete);
}

/**
 * A limit applies within its range and away from steps and events; the first matching row counts.
 */
TEST(LimitsTest, ConditionsDecideWhichRowApplies)
{
    const ValueTable good = expectedTable();
    struct Case
    {
        const char* mRows;
        SeriesKey mKey;
        size_t mJudged;
        double mLimit; ///< of the first value
    };
    const Case cases[] = {
        {"quantity = 'rms-half'\nnominal = 0.1", {"rms-half", "UA"}, 501, 0.23},
        {"quantity = 'rms-half'\nreading = 0.1", {"rms-half", "UB"}, 501, 0.22},
        {"quantity = 'rms-half'\nabsolute = 1\nreading = 0.1\nnominal = 0.1",
         {"rms-half", "UB"},
         501,
         1.45},
        {"quantity = 'rms-half'\nfrom = '60 %'\nabsolute = 1", {"rms-half", "UA"}, 486, 1.0},
        {"quantity = 'rms-half'\nto = 200\nabsolute = 1", {"rms-half", "UA"}, 15, 0.0},
        {"quantity = 'rms-half'\nchannel = 'UB'\nabsolute = 1", {"rms-half", "UA"}, 0, 0.0},
        // Not from 3.88 to 4.10 s, nor from 4.18 to 4.40 s: the step is between two values.
        {"quantity = 'rms-half'\nedge = 0.1\nabsolute = 1", {"rms-half", "UB"}, 477, 1.0},
        {"quantity = 'harmonic'\nafter = 0\nabsolute = 1", {"harmonic-5", "UB"}, 48, 1.0},
        {"quantity = 'harmonic'\nafter = 1\nabsolute = 1", {"harmonic-5", "UB"}, 43, 1.0},
        {"quantity = 'harmonic'\nfrom = 4\nabsolute = 1\n[[limit]]\nquantity = "
         "'harmonic'\nabsolute = 2",
         {"harmonic-5", "UB"},
         51,
         2.0},
        {"quantity = 'harmonic-3'\nabsolute = 1", {"harmonic-5", "UB"}, 0, 0.0},
        {"quantity = 'frequency-pmu'\nwhile = 'steady'\nabsolute = 1",
         {"frequency-pmu", ""},
         501,
         1.0},
        {"quantity = 'frequency-pmu'\nwhile = 'varying'\nabsolute = 1",
         {"frequency-pmu", ""},
         0,
         0.0},
    };
    for (const Case& it : cases) {
        const assess::LimitTable limits =
            assess::parseLimits(std::string("tolerance = 0.01\n[[limit]]\n") + it.mRows, "l");
        const assess::Assessment assessment(good, good, limits, {kNominal, {}, false});
        EXPECT_EQ(seriesOf(assessment.result(), it.mKey).mJudged, it.mJudged) << it.mRows;
        EXPECT_NEAR(assessment.valuesOf(it.mKey).front().mLimit, it.mLimit, 1e-9) << it.mRows;
    }
}

/** The state of the expected phasors decides about the limit. */
TEST(LimitsTest, KnowsRampAndModulation)
{
    struct Case
    {
        const char* mState;
        double mModulation; ///< of the magnitude, at 2 Hz
        double mRate;       ///< Hz/s
        double mStep = 0.0; ///< of the magnitude, after 2 s
    };
    for (const Case& it : {Case{"steady", 0.0, 0.0},
                           {"steady", 0.0, 0.0, 0.1},
                           {"ramp", 0.0, 1.0},
                           {"ramp", 0.0, 0.1},
                           {"varying", 0.1, 0.0}}) {
        ValueTable table;
        for (qint64 ns = kBegin; ns <= kBegin + 4 * kSecond; ns += kFrame) {
            const double seconds = double(ns - kBegin) * 1e-9;
            const double swing = it.mModulation * std::cos(base::kTwoPi * 2.0 * seconds) +
                                 (seconds > 2.0 ? it.mStep : 0.0);
            table.series({"phasor-magnitude", "UA"}).add({ns, 230.0 * (1.0 + swing)});
            table.series({"phasor-angle", "UA"})
                .add({ns, std::remainder(180.0 * it.mRate * seconds * seconds, 360.0)});
            table.series({"rocof", ""}).add({ns, it.mRate});
        }
        const assess::LimitTable limits = assess::parseLimits(
            std::string("tolerance = 0.01\n[[limit]]\nquantity = 'tve'\nabsolute = 1\nwhile = '") +
                it.mState + "'\n",
            "l");
        const auto result =
            assess::Assessment(table, table, limits, {kNominal, {}, false}).result();
        EXPECT_EQ(seriesOf(result, {"tve", "UA"}).mJudged, 201U) << it.mState;
    }
}

/** A filter that averages over frames is late and slow; another one overshoots. */
TEST(StepTest, ResponseDelayAndOvershootAreMeasured)
{
    ValueTable expected;
    ValueTable measured;
    constexpr double kOver[] = {0.0, 0.2, 0.8, 1.08, 0.99}; // of the step, from 2.02 s on
    for (int i = 0; i < 200; ++i) {
        const qint64 ns = kBegin + i * kFrame;
        const int since = i - 100;
        const double share = since < 0 ? 0.0 : since < 5 ? kOver[since] : 1.0;
        expected.series({"phasor-magnitude", "UA"}).add({ns, since < 0 ? 200.0 : 220.0});
        measured.series({"phasor-magnitude", "UA"}).add({ns, 200.0 + 20.0 * share});
        for (ValueTable* const table : {&expected, &measured}) {
            table->series({"phasor-angle", "UA"}).add({ns, 10.0});
        }
    }
    const assess::LimitTable limits = assess::readLimits("pmu-p");
    const auto result =
        assess::Assessment(expected, measured, limits, {kNominal, {}, false}).result();
    // The measured step reaches one half between frames 101 and 102, the expected one between 99
    // and 100.
    EXPECT_NEAR(seriesOf(result, {"step-delay", "UA"}).mLargest->mMeasured, 0.04, 1e-9);
    EXPECT_NEAR(seriesOf(result, {"step-delay", "UA"}).mLargest->mLimit, 0.005, 1e-9);
    EXPECT_NEAR(seriesOf(result, {"step-overshoot", "UA"}).mLargest->mMeasured, 8.0, 1e-9);
    // The error is 0, 9.09, 7.27, 1.82 and 0.73 % in frames 99 to 103; 1 % is at 99.11 and 102.75.
    EXPECT_NEAR(seriesOf(result, {"step-response-tve", "UA"}).mLargest->mMeasured, 0.0728, 1e-5);
    const auto forClassM = assess::Assessment(expected, measured, assess::readLimits("pmu-m"),
                                              {kNominal, {"step-response-tve"}, false})
                               .result();
    EXPECT_EQ(forClassM.mVerdict, Verdict::Within) << "less than 7 intervals between frames";
    EXPECT_EQ(result.mVerdict, Verdict::Beyond);
}
