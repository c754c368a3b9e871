#include <gtest/gtest.h>

#include <cmath>

#include "assess/Assessment.h"
#include "assess/EventDiagnosis.h"
#include "assess/Events.h"

namespace {
constexpr qint64 kEventsMs = 1'000'000;
constexpr qint64 kEventsBeginNs = 1'700'000'000'000 * kEventsMs;
} // namespace

/** Events by their starts in ms; each measured one has the number of its expected one. */
TEST(EventMatchingTest, NearestEventsBelongTogether)
{
    struct Case
    {
        std::vector<int> mExpected;
        std::vector<int> mMeasured;
        std::vector<double> mLateMs; ///< of those that were matched
        size_t mMissing;
        size_t mAdditional;
        size_t mDoubled = 0;
    };
    const Case cases[] = {
        {{0, 5000}, {3, 4990}, {3.0, -10.0}, 0, 0},
        {{0, 5000}, {3, 5000, 3, 5000}, {3.0, 0.0}, 0, 0, 2},
        {{0, 5000}, {4990}, {-10.0}, 1, 0},
        {{0}, {1001}, {}, 1, 1},
        {{0}, {1000}, {1000.0}, 0, 0},
        {{}, {700}, {}, 0, 1},
        // The nearest pair is first, even where that leaves another one alone.
        {{0, 900}, {800}, {-100.0}, 1, 0},
        {{0, 900}, {800, 1900}, {-100.0}, 1, 1},
        {{0, 100, 200}, {110, 210, 10}, {10.0, 10.0, 10.0}, 0, 0},
    };
    for (const Case& it : cases) {
        assess::ValueTable expected;
        assess::ValueTable measured;
        for (const int ms : it.mExpected) {
            expected.series({"dip-residual", "UA"}).add({kEventsBeginNs + ms * kEventsMs, 100.0});
            expected.series({"dip-duration", "UA"}).add({kEventsBeginNs + ms * kEventsMs, 0.1});
        }
        for (const int ms : it.mMeasured) {
            measured.series({"dip-residual", "UA"}).add({kEventsBeginNs + ms * kEventsMs, 101.0});
            measured.series({"swell-max", "UA"}).add({kEventsBeginNs + ms * kEventsMs, 270.0});
        }
        measured.sort();
        expected.series({"event-count", "U"}).add({kEventsBeginNs, double(it.mExpected.size())});
        assess::ComputedSeries computed;
        assess::addEvents(expected, measured, 1000 * kEventsMs, false, computed);
        const assess::Matching& starts = computed[{"dip-start", "UA"}];
        std::vector<double> late;
        for (const assess::Pair& pair : starts.mPairs) {
            late.push_back(std::round(1e6 * pair.mMeasured) / 1e3);
        }
        EXPECT_EQ(late, it.mLateMs);
        EXPECT_EQ(starts.mCounts.mMissing, it.mMissing);
        EXPECT_EQ(starts.mCounts.mAdditional, it.mAdditional);
        EXPECT_EQ(starts.mCounts.mDoubled, it.mDoubled);
        const assess::Matching& residuals = computed[{"dip-residual", "UA"}];
        EXPECT_EQ(residuals.mPairs.size(), it.mLateMs.size());
        const assess::Matching& durations = computed[{"dip-duration", "UA"}];
        EXPECT_EQ(durations.mCounts.mMissing, it.mExpected.size()) << "the device does not say it";
        const assess::Matching& swells = computed[{"swell-start", "UA"}];
        EXPECT_EQ(swells.mCounts.mAdditional, it.mMeasured.size() - it.mDoubled);
    }
}

/** A dip that only the device has, at 5 s: the expected values decide if it counts. */
TEST(EventMatchingTest, EventsThatWereNotExpectedToBeMeasuredAreNotAdditional)
{
    struct Case
    {
        const char* mName;
        std::vector<int> mCountAtMs; ///< the row "event-count"; none where events were not measured
        bool mHasSwell;              ///< at 0 s
        bool mIsPart;
        size_t mAdditional;
    };
    const Case cases[] = {
        {"looked for, and there was none", {10'000}, false, false, 1},
        {"a table with other events", {}, true, false, 1},
        {"not looked for", {}, false, false, 0},
        {"within the play", {10'000}, false, true, 1},
        {"after the play", {4'000}, false, true, 0},
        {"in another play", {3'000}, false, true, 0},
    };
    for (const Case& it : cases) {
        assess::ValueTable expected;
        expected.series({"rms", "UA"}).add({kEventsBeginNs, 230.0});
        for (const int ms : it.mCountAtMs) {
            expected.series({"event-count", "U"}).add({kEventsBeginNs + ms * kEventsMs, 0.0});
        }
        if (it.mHasSwell) {
            expected.series({"swell-max", "UA"}).add({kEventsBeginNs, 270.0});
        }
        assess::ValueTable measured;
        measured.series({"rms", "UA"}).add({kEventsBeginNs, 230.0});
        measured.series({"dip-residual", "UA"}).add({kEventsBeginNs + 5'000 * kEventsMs, 100.0});
        assess::ComputedSeries computed;
        assess::addEvents(expected, measured, 1000 * kEventsMs, it.mIsPart, computed);
        const bool isFar = it.mName == std::string("in another play");
        EXPECT_TRUE(!isFar || computed.empty()) << "the play has no series of others' events";
        EXPECT_EQ((computed[{"dip-start", "UA"}].mCounts.mAdditional), it.mAdditional) << it.mName;
        const assess::LimitTable limits = assess::readLimits("pq-a");
        const auto result =
            assess::Assessment(expected, measured, limits, {{230.0, 5.0, 50.0}, {}, it.mIsPart})
                .result();
        EXPECT_EQ(result.isGood(), it.mAdditional == 0) << it.mName;
        EXPECT_EQ(result.mUnexpected.size(), it.mAdditional == 0 && !it.mIsPart ? 1U : 0U);
    }
}

/** Only if every duration has the same error. */
TEST(EventDiagnosisTest, EndsThatAreOnePeriodEarlyAreNamed)
{
    struct Case
    {
        std::vector<double> mDips;   ///< errors of the durations, in periods
        std::vector<double> mSwells; ///< likewise
        bool mIsNamed;
    };
    for (const Case& it : {Case{{-1.0, -1.0}, {}, true},
                           {{-0.8}, {-1.2}, true},
                           {{-1.0, -1.0}, {-0.5}, false},
                           {{-1.0, 0.0}, {}, false},
                           {{1.0, 1.0}, {}, false},
                           {{-1.0}, {}, false},
                           {{}, {}, false}}) {
        for (const double hertz : {50.0, 60.0}) {
            assess::ComputedSeries computed;
            for (const double periods : it.mDips) {
                computed[{"dip-duration", "UA"}].mPairs.push_back({0, 1.0, 1.0 + periods / hertz});
            }
            for (const double periods : it.mSwells) {
                computed[{"swell-duration", "U"}].mPairs.push_back({0, 1.0, 1.0 + periods / hertz});
            }
            computed[{"rapid-change-duration", "U"}].mPairs.push_back({0, 1.0, 1.0});
            EXPECT_EQ(assess::diagnoseEvents(computed, hertz).size(), it.mIsNamed ? 1U : 0U);
            EXPECT_TRUE(assess::diagnoseEvents(computed, 0.0).empty());
        }
    }
}
