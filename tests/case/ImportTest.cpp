#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <tuple>

#include "ClosedFormImport.h"
#include "SeededRandom.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/** Each line has its time in the recording, and the values at that time. */
TEST(ImportTest, LinesNameTheirTimeInTheRecording)
{
    const ClosedForm signal;
    for (const importing::LineTiming timing :
         {importing::LineTiming::Phase, importing::LineTiming::Nominal}) {
        importing::ImportOptions options;
        options.mTiming = timing;
        options.mFrom = 0.1;
        options.mTo = 0.3;
        const Imported imported = import(signal, 0.5, options);
        EXPECT_EQ(imported.mLines.size(), timing == importing::LineTiming::Phase ? 3602U : 3601U);
        for (size_t i = 0; i < imported.mLines.size(); ++i) {
            const std::vector<double>& line = imported.mLines[i];
            ASSERT_NEAR(line[0], line[1] * 4800.0 + 1.0, 0.5001);
            ASSERT_EQ(line[2], i);
            ASSERT_NEAR(line[4], timing == importing::LineTiming::Phase ? 50.02 : 50.0, 1e-4);
            for (int channel = 0; channel < 3; ++channel) {
                ASSERT_NEAR(line[5 + channel], signal.valueAt(line[1], channel), 2.0);
                ASSERT_NEAR(line[9 + channel], signal.valueAt(line[1], channel), 2.0);
            }
            ASSERT_EQ(line[8] + line[12], 0.0);
        }
    }
}

/** Sums of channels at any rate, from any part of the recording, with each timing. */
TEST(ImportTest, AnyMappingKeepsTheRecordedValues)
{
    std::mt19937 random = seededRandom();
    const auto number = [&random](double min, double max) {
        return std::uniform_real_distribution<double>(min, max)(random);
    };
    const ClosedForm signal;
    for (int round = 0; round < 12; ++round) {
        std::string text;
        std::array<std::array<double, 3>, 8> factors{};
        for (size_t channel = 0; channel < 8; ++channel) {
            const char quantity = random() % 2 == 0 ? 'U' : 'I';
            text += fmt::format("{}{}=", text.empty() ? "" : ",", channel);
            for (size_t phase = 0; phase < 3; ++phase) {
                factors[channel][phase] = std::round(number(-200.0, 200.0)) / 100.0;
                text += fmt::format("{}{}{}*{}", phase == 0 ? "" : "+", quantity, "ABC"[phase],
                                    factors[channel][phase]);
            }
        }
        importing::ImportOptions options;
        ASSERT_EQ(importing::readAssignments(text, options.mMapping.mAssignments), "") << text;
        options.mTiming =
            round % 2 == 0 ? importing::LineTiming::Phase : importing::LineTiming::Nominal;
        options.mFrom = number(0.06, 0.1);
        options.mTo = number(0.14, 0.2);
        for (const std::vector<double>& line :
             import(signal, 0.3, options, number(4'600.0, 20'000.0)).mLines) {
            for (size_t channel = 0; channel < 8; ++channel) {
                double sum = 0.0;
                for (size_t phase = 0; phase < 3; ++phase) {
                    sum += factors[channel][phase] * signal.valueAt(line[1], int(phase));
                }
                ASSERT_NEAR(line[5 + channel], sum, 20.0) << text << ' ' << line[1];
            }
        }
    }
}

namespace {
/** A sag from which the recording does not return. */
ClosedForm lastingSag()
{
    ClosedForm signal;
    signal.mSagBegin = 0.3;
    signal.mSagEnd = 1.0;
    return signal;
}

/** Number of steps between lines that are larger than any of the first 1000, except at the sag. */
size_t jumpsIn(const std::vector<std::vector<double>>& lines, bool isLoop)
{
    double steepest = 0.0;
    for (size_t i = 0; i < 1000; ++i) {
        steepest = std::max(steepest, std::abs(lines[i + 1][5] - lines[i][5]));
    }
    size_t jumps = 0;
    for (size_t i = 0; i + (isLoop ? 0 : 1) < lines.size(); ++i) {
        const double step = lines[(i + 1) % lines.size()][5] - lines[i][5];
        const bool isAtSag = std::abs(lines[i][1] - 0.3) < 0.01;
        jumps += std::abs(step) > 1.05 * steepest && !isAtSag ? 1 : 0;
    }
    return jumps;
}
} // namespace

/**
 * When it is repeated, no step is larger than in the signal itself: --loop fades the end to the
 * beginning.
 */
TEST(ImportTest, LoopHasNoSeam)
{
    for (const importing::LineTiming timing :
         {importing::LineTiming::Phase, importing::LineTiming::Nominal}) {
        for (const size_t before : {0, 3}) {
            importing::ImportOptions options;
            options.mTiming = timing;
            options.mBefore = before;
            options.mDoLoop = true;
            const auto lines = import(lastingSag(), 0.5, options).mLines;
            if (timing == importing::LineTiming::Phase) {
                EXPECT_EQ(lines.size() % 360, 0U);
            }
            EXPECT_EQ(jumpsIn(lines, true), 0U);
            EXPECT_NEAR(lines[before == 0 ? lines.size() - 1 : 720][5], lines[0][5],
                        0.03 * ClosedForm::kPeak);
            EXPECT_GE(lines.size(), (25 + before + 1) * 360);
            EXPECT_LE(lines.size(), (25 + before + 2) * 360 + 2);
        }
    }
}

/** The sag continues: the last period is repeated after it, the first one before it. */
TEST(ImportTest, AfterContinuesTheLastPeriod)
{
    for (const importing::LineTiming timing :
         {importing::LineTiming::Phase, importing::LineTiming::Nominal}) {
        importing::ImportOptions options;
        options.mTiming = timing;
        const size_t recorded = import(lastingSag(), 0.5, options).mLines.size();
        options.mBefore = 2;
        options.mAfter = 3;
        const Imported imported = import(lastingSag(), 0.5, options);
        const auto& lines = imported.mLines;
        ASSERT_EQ(lines.size(), recorded + 5 * 360);
        EXPECT_EQ(jumpsIn(lines, false), 0U);
        const size_t end = recorded + 720;
        for (size_t i = end; i < lines.size(); ++i) {
            ASSERT_GE(lines[i][1], 0.5 - 0.02 - 1e-4);
            ASSERT_NEAR(lines[i][5], lines[i - 360][5], 0.02 * ClosedForm::kPeak) << i;
            ASSERT_NEAR(lines[i][4], 50.01, 0.011);
        }
        EXPECT_THAT(imported.mReport.mRemarks, Not(Contains(HasSubstr("not steady"))));
    }
}

/** A period is repeated although the adjacent one differs. */
TEST(ImportTest, UnsteadyPeriodsAreReported)
{
    const std::tuple<double, double, bool, const char*> rows[] = {
        {0.02, 0.5, false,
         "--before repeats the first period, which is not steady: the one after it "},
        {0.485, 0.5, false,
         "--after repeats the last period, which is not steady: the one before it "},
        {0.02, 0.03, false, "fewer than two periods are imported: "},
        {0.02, 0.5, true,
         "--loop repeats the first period, which is not steady: the one after it "},
        {0.485, 0.5, true,
         "--loop repeats the last period, which is not steady: the one before it "},
        {0.02, 0.03, true, "fewer than two periods are imported: "},
    };
    for (const auto& [sagBegin, end, doLoop, remark] : rows) {
        ClosedForm signal;
        signal.mSagBegin = sagBegin;
        signal.mSagEnd = 1.0;
        importing::ImportOptions options;
        options.mTo = end;
        options.mBefore = doLoop ? 0 : 1;
        options.mAfter = doLoop ? 0 : 1;
        options.mDoLoop = doLoop;
        const auto remarks = import(signal, 0.5, options).mReport.mRemarks;
        EXPECT_THAT(remarks, Contains(testing::StartsWith(remark)));
    }
    importing::ImportOptions tooShort;
    tooShort.mTo = 0.015;
    for (const auto& [before, after, doLoop] :
         {std::tuple{1, 0, false}, {0, 1, false}, {0, 0, true}}) {
        tooShort.mBefore = before;
        tooShort.mAfter = after;
        tooShort.mDoLoop = doLoop;
        EXPECT_THAT(importError(tooShort),
                    HasSubstr("expected a recording of one period at least"));
    }
}

TEST(ImportTest, CountsDoNotWrap)
{
    importing::ImportOptions options;
    options.mMapping.mCountsPerVolt = 2e6;
    const std::string error = importError(options);
    EXPECT_THAT(error, HasSubstr("closed.cfg: channel 0 (UA) at 0.000000000 s: "));
    const size_t begin = error.find("--scale ") + 8;
    const Words scales = split(error.substr(begin, error.find(" would fit") - begin), ',');
    ASSERT_EQ(scales.size(), 2U) << error;
    EXPECT_EQ(scales[1], "1000");
    options.mMapping.mCountsPerVolt = std::stod(scales[0]);
    EXPECT_EQ(importError(options), "");
    options.mMapping.mCountsPerVolt *= 1.02;
    EXPECT_NE(importError(options), "");

    options.mMapping.mCountsPerVolt = HUGE_VAL;
    EXPECT_THAT(importError(options),
                testing::EndsWith(" inf counts do not fit 32 bits; --clip limits such values"));

    options.mClip = true;
    options.mMapping.mCountsPerVolt = 2e6;
    const Imported imported = import({}, 0.5, options);
    EXPECT_EQ(imported.mLines[0][5], 2147483647.0);
    EXPECT_THAT(imported.mReport.mRemarks, Contains(HasSubstr("values limited to 32 bits")));
}

/** From a recording to a configuration, with the command. */
TEST(ImportTest, CommandMakesAPlayableFile)
{
    const TestFiles files;
    std::string data;
    for (int i = 0; i < 480; ++i) {
        data += fmt::format("{},0,{:.0f}\n", i + 1, 1000 * std::sin(i * 6.2831853 / 96));
    }
    files.make("fault.dat", data);
    const std::string recording =
        files
            .make("fault.cfg",
                  "S,D,1999\n1,1A,0D\n1,UA,A,,V,1,0,0,-9999,9999,200,1,S\n50\n1\n"
                  "4800,480\n01/01/2020,00:00:00\n01/01/2020,00:00:00\nASCII\n1\n")
            .toStdString();
    const std::string value = files.path("fault.csv");
    const std::string configuration = files.path("fault.conf");
    const CommandRunner runner;
    const CommandResult result = runner.run({VX_CASE, "import", recording, "-o", value,
                                             "--configuration", configuration, "--scale", "2,1"});
    ASSERT_EQ(result.mExitCode, 0) << result;
    EXPECT_THAT(result.mErrors, HasSubstr("0  UA"));
    EXPECT_THAT(readFile(configuration), testing::EndsWith("\n0,1," + value + "\n"));
    EXPECT_THAT(readFile(value), HasSubstr("# made by vx-case import "));
    EXPECT_EQ(runner.run({VX_CASE, "check", configuration}).mExitCode, 0);
    EXPECT_EQ(runner.run({VX_CASE, "import", value}).mErrors,
              "vx-case: " + value + ": is a value file already; play it without an import\n");

    const CommandResult primary =
        runner.run({VX_CASE, "import", recording, "--side", "primary", "--scale", "50000,1",
                    "--clip", "--json", "-o", value});
    EXPECT_THAT(readFile(value), HasSubstr("channel 0: UA, 10000000 counts for 1 V\n"));
    EXPECT_THAT(primary.mErrors, testing::AllOf(HasSubstr("\"peak\": 1000.0,"),
                                                HasSubstr("\"writtenPeak\": 214.7483648")));

    for (const Words& wrong : {Words{"--scale", "1"},
                               {"--side", "left"},
                               {"--frequency", "0"},
                               {"--channels", "9=1"},
                               {"--loop", "--after", "1"},
                               {"--before", "-1"}}) {
        const CommandResult refused =
            runner.run(joined({VX_CASE, "import", recording, "-o", value}, wrong));
        EXPECT_EQ(refused.mExitCode, 2) << refused;
        EXPECT_THAT(refused.mErrors, HasSubstr(wrong[0])) << refused;
    }
}
