#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "MeterRun.h"
#include "measure/EventMeter.h"

namespace {
/** A rms that lasts for some half periods. */
struct Level
{
    double mVolts;
    int mCount;
};

using Levels = std::vector<Level>;

struct EventCase
{
    const char* mName;
    std::array<Levels, 3> mVoltages;
    std::vector<std::string> mRows; ///< half period of the beginning, quantity, channel, value
    measure::EventPercents mPercents{};
};

void PrintTo(const EventCase& testCase, std::ostream* out)
{
    *out << testCase.mName;
}

constexpr qint64 kHalfPeriodNs = 10'000'000;
const Levels kGood{{230, 200}};

const EventCase kEventCases[] = {
    {"NoneIsCounted", {kGood, kGood, kGood}, {"201 event-count U 0"}},
    {"NoneWhereNothingIsInService", {Levels{{57, 200}}, Levels{{0, 200}}, Levels{{0, 200}}}, {}},
    {"ThresholdsOfTheUser",
     {Levels{{230, 20}, {190, 20}, {230, 160}}, Levels{{230, 50}, {260, 10}, {230, 140}},
      Levels{{230, 90}, {22, 10}, {230, 100}}},
     {"90 dip-residual UC 22", "90 dip-duration UC 0.12", "90 dip-residual U 22",
      "90 dip-duration U 0.12", "90 interruption-residual UC 22",
      "90 interruption-duration UC 0.12", "201 event-count U 1"},
     {80.0, 115.0, 10.0}},
    {"DipWithHysteresis",
     {Levels{{230, 20}, {150, 1}, {100, 5}, {210, 4}, {212, 170}}, kGood, kGood},
     {"20 dip-residual UA 100", "20 dip-duration UA 0.12", "20 dip-residual U 100",
      "20 dip-duration U 0.12", "201 event-count U 1"}},
    {"SwellOfTheThresholdIsNone",
     {Levels{{230, 20}, {253, 20}, {230, 160}}, Levels{{230, 30}, {260, 2}, {250, 3}, {230, 165}},
      kGood},
     {"30 swell-max UB 260", "30 swell-duration UB 0.07", "30 swell-max U 260",
      "30 swell-duration U 0.07", "201 event-count U 1"}},
    {"DipsThatOverlap",
     {Levels{{230, 20}, {100, 30}, {230, 150}},
      Levels{{230, 30}, {90, 5}, {230, 10}, {80, 15}, {230, 140}}, kGood},
     {"20 dip-residual UA 100", "20 dip-duration UA 0.32", "30 dip-residual UB 90",
      "30 dip-duration UB 0.07", "45 dip-residual UB 80", "45 dip-duration UB 0.17",
      "20 dip-residual U 80", "20 dip-duration U 0.42", "201 event-count U 1"}},
    {"InterruptionOfAll",
     {Levels{{230, 20}, {0, 20}, {230, 160}}, Levels{{230, 22}, {5, 20}, {230, 158}},
      Levels{{230, 21}, {3, 10}, {14, 5}, {230, 164}}},
     {"20 dip-residual UA 0", "20 dip-duration UA 0.22", "20 dip-residual U 0",
      "20 dip-duration U 0.24", "20 interruption-residual UA 0", "20 interruption-duration UA 0.22",
      "21 dip-residual UC 3", "21 dip-duration UC 0.17", "21 interruption-residual UC 3",
      "21 interruption-duration UC 0.17", "22 dip-residual UB 5", "22 dip-duration UB 0.22",
      "22 interruption-residual U 0", "22 interruption-duration U 0.16",
      "22 interruption-residual UB 5", "22 interruption-duration UB 0.22", "201 event-count U 2"}},
    {"CutOffAtBothEnds",
     {Levels{{100, 20}, {230, 150}, {90, 30}}, kGood, Levels{{0, 200}}},
     {"170 dip-residual UA 90", "170 dip-residual U 90", "201 event-count U 1"}},
    {"RapidChange",
     {Levels{{230, 150}, {225, 1}, {215, 30}, {225, 5}, {216, 200}}, Levels{{230, 386}},
      Levels{{230, 386}}},
     {"151 rapid-change-max UA 14.95", "151 rapid-change-steady UA 13.95",
      "151 rapid-change-duration UA 0.34", "151 rapid-change-max U 14.95",
      "151 rapid-change-steady U 13.95", "151 rapid-change-duration U 0.34",
      "387 event-count U 1"}},
    {"EndOfALongDipIsNoRapidChange",
     {Levels{{230, 150}, {201, 120}, {212, 1}, {230, 175}}, Levels{{230, 446}}, Levels{{230, 446}}},
     {"150 dip-residual UA 201", "150 dip-duration UA 1.22", "150 dip-residual U 201",
      "150 dip-duration U 1.22", "447 event-count U 1"}},
    {"DipIsNoRapidChange",
     {Levels{{230, 150}, {215, 20}, {100, 5}, {215, 200}}, Levels{{230, 200}, {243, 175}},
      Levels{{230, 375}}},
     {"170 dip-residual UA 100", "170 dip-duration UA 0.07", "170 dip-residual U 100",
      "170 dip-duration U 0.07", "200 rapid-change-max UB 13", "200 rapid-change-steady UB 13",
      "200 rapid-change-duration UB 0", "376 event-count U 1"}},
};
} // namespace

class EventTest : public testing::TestWithParam<EventCase>
{
};

INSTANTIATE_TEST_SUITE_P(Events, EventTest, testing::ValuesIn(kEventCases),
                         [](const auto& each) { return each.param.mName; });

TEST_P(EventTest, AreFoundInTheRms)
{
    const EventCase& testCase = GetParam();
    std::array<std::vector<double>, 3> volts;
    for (size_t channel = 0; channel < 3; ++channel) {
        for (const Level& level : testCase.mVoltages[channel]) {
            volts[channel].insert(volts[channel].end(), static_cast<size_t>(level.mCount),
                                  level.mVolts);
        }
    }
    measure::EventSettings settings;
    settings.mPercents = testCase.mPercents;
    measure::EventMeter meter(settings);
    RowCollector rows;
    for (size_t i = 0; i < volts[0].size(); ++i) {
        const qint64 begin = static_cast<qint64>(i) * kHalfPeriodNs;
        for (size_t channel = 0; channel < 3; ++channel) {
            meter.add({begin, begin + 2 * kHalfPeriodNs, measure::deviceChannel(channel),
                       volts[channel].at(i)},
                      rows);
        }
        meter.add({begin, begin + 2 * kHalfPeriodNs, measure::Channel::UN, 0.0}, rows);
    }
    meter.finish(rows);
    std::vector<std::string> found;
    for (const measure::Measurement& row : rows.mRows.mRows) {
        found.push_back(fmt::format("{} {} {} {:.6g}", row.mUtcNs / kHalfPeriodNs,
                                    measure::nameOf(row.mKind), measure::nameOf(row.mChannel),
                                    row.mValue));
    }
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(testCase.mRows));
}
