#include <fmt/format.h>
#include <gmock/gmock.h>

#include <functional>

#include "ClosedForm.h"
#include "CommandRunner.h"
#include "Files.h"
#include "SeededRandom.h"
#include "base/CaseError.h"
#include "importing/Importer.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {
/** Three voltages in kV and three currents in A, in closed form. */
class ClosedFormSource : public waveform::SignalSource
{
public:
    ClosedFormSource(const ClosedForm& signal, double rate, double seconds)
        : mSignal(signal), mRate(rate), mSamples(static_cast<size_t>(rate * seconds) + 1)
    {
        mDescription.mFileName = "closed.cfg";
        mDescription.mNominalHz = 50.0;
        mDescription.mRates = {{rate, mSamples}};
        for (const char* const name : {"UA", "UB", "UC", "IA", "IB", "IC"}) {
            waveform::ChannelDescription channel;
            channel.mNumber = static_cast<int>(mDescription.mChannels.size()) + 1;
            channel.mName = name;
            channel.mUnit = name[0] == 'U' ? "kV" : "A";
            mDescription.mChannels.push_back(channel);
        }
    }

    const waveform::SignalDescription& description() const override { return mDescription; }
    double progress() const override { return 1.0; }

    bool read(waveform::SignalBlock& block) override
    {
        const size_t count = std::min<size_t>(1000, mSamples - mPlace);
        block.resize(6, count);
        for (size_t i = 0; i < count; ++i) {
            block.mSeconds[i] =
                static_cast<double>(mPlace + i) / mRate + (mPlace > 0 ? mGapSeconds : 0.0);
            for (size_t channel = 0; channel < 6; ++channel) {
                const double counts = mSignal.valueAt(block.mSeconds[i], int(channel % 3));
                block.mValues[channel][i] = counts / (channel < 3 ? 1e6 : 1e3);
            }
        }
        mPlace += count;
        return count > 0;
    }

    waveform::SignalDescription mDescription;
    double mGapSeconds = 0.0; ///< behind the first 1000 samples

private:
    ClosedForm mSignal;
    double mRate;
    size_t mSamples;
    size_t mPlace = 0;
};

struct Imported
{
    importing::ImportReport mReport;
    std::vector<std::vector<double>> mLines; ///< field by field
};

Imported import(const ClosedForm& signal, double seconds, const importing::ImportOptions& options,
                double rate = 4800.0)
{
    const TestFiles files;
    ClosedFormSource source(signal, rate, seconds);
    base::ResultFile output(files.path("case.csv"));
    Imported imported{importing::importSignal(source, options, output), {}};
    output.commit();
    for (const std::string& text : split(readFile(files.path("case.csv")), '\n')) {
        if (text.front() != '#') {
            std::vector<double>& line = imported.mLines.emplace_back();
            for (const std::string& field : split(text, ';')) {
                line.push_back(std::stod(field));
            }
        }
    }
    return imported;
}

/** The message of what is thrown; empty for none. */
std::string errorOf(const std::function<void()>& act)
{
    try {
        act();
    } catch (const base::CaseError& error) {
        return error.what();
    }
    return "";
}

std::string errorOf(const importing::ImportOptions& options)
{
    return errorOf([&] { import({}, 0.5, options); });
}
} // namespace

/** Each line says where in the recording it was taken, and holds what was there. */
TEST(ImportTest, LinesCanBeFoundAgain)
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

/** Sums of channels at any rate, from any part of the recording, in each way of timing. */
TEST(ImportTest, AnyMappingHoldsWhatWasRecorded)
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

/** Steps from line to line that are steeper than any of the first 1000, but at the sag. */
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

/** Played over and over, nothing is steeper than the signal itself: --loop fades it to its begin.
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

/** What is sagged stays so: its last period goes on, and the one in front is the first. */
TEST(ImportTest, AfterGoesOnAsTheRecordingEnds)
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

/** Of a period that is repeated although the one beside it differs. */
TEST(ImportTest, WhatIsNotSteadyIsReported)
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
        EXPECT_THAT(errorOf(tooShort), HasSubstr("expected a recording of one period at least"));
    }
}

TEST(ImportTest, NothingWraps)
{
    importing::ImportOptions options;
    options.mMapping.mCountsPerVolt = 2e6;
    const std::string error = errorOf(options);
    EXPECT_THAT(error, HasSubstr("closed.cfg: channel 0 (UA) at 0.000000000 s: "));
    const size_t begin = error.find("--scale ") + 8;
    const Words scales = split(error.substr(begin, error.find(" would fit") - begin), ',');
    ASSERT_EQ(scales.size(), 2U) << error;
    EXPECT_EQ(scales[1], "1000");
    options.mMapping.mCountsPerVolt = std::stod(scales[0]);
    EXPECT_EQ(errorOf(options), "");
    options.mMapping.mCountsPerVolt *= 1.02;
    EXPECT_NE(errorOf(options), "");

    options.mMapping.mCountsPerVolt = HUGE_VAL;
    EXPECT_THAT(errorOf(options),
                testing::EndsWith(" inf counts do not fit 32 bits; --clip limits such values"));

    options.mClip = true;
    options.mMapping.mCountsPerVolt = 2e6;
    const Imported imported = import({}, 0.5, options);
    EXPECT_EQ(imported.mLines[0][5], 2147483647.0);
    EXPECT_THAT(imported.mReport.mRemarks, Contains(HasSubstr("values limited to 32 bits")));
}

TEST(ImportTest, ReportsWhatItDid)
{
    importing::ImportOptions options;
    const Imported imported = import({}, 0.1, options);
    const importing::ChannelReport& row = imported.mReport.mChannels[0];
    EXPECT_EQ(row.mSource, "UA");
    EXPECT_EQ(row.mFactor, 1e6);
    EXPECT_NEAR(row.mPeak, 1.18, 0.001); // the sum of all harmonics at the first sample
    EXPECT_NEAR(row.mWrittenPeak, 1.18, 0.002);
    EXPECT_NEAR(row.mRms, 0.7099, 0.002);
    EXPECT_THAT(imported.mReport.mRemarks,
                Contains("the recording has fewer than six periods: 50 Hz is played"));
    EXPECT_EQ(imported.mReport.mLines, imported.mLines.size());
    for (const auto& [from, to] : {std::pair{0.2, 0.1}, {-1.0, 0.1}, {0.0, 0.6}, {0.5, 0.5}}) {
        options.mFrom = from;
        options.mTo = to;
        EXPECT_THAT(errorOf(options), HasSubstr("expected a part of 0 to 0.5 s"));
    }
}

/** Few samples a period, which miss the crests; and states that change, in the order of time. */
TEST(ImportTest, PeaksAndStatesAreReported)
{
    const TestFiles files;
    ClosedForm signal;
    signal.mHz = 50.0; // UB is sampled 24 degrees from its crest
    ClosedFormSource source(signal, 250.0, 0.5);
    for (int i = 1; i < 11; ++i) {
        waveform::StatusChannel status;
        status.mNumber = i;
        status.mName = i == 2 ? "TRIP" : "";
        status.mChangeCount = 7;
        status.mChanges = {{i == 2 ? 0.125 : 0.2, true}, {0.3, false}, {0.9, true}};
        source.mDescription.mStatusChannels.push_back(status);
    }
    base::ResultFile output(files.path("case.csv"));
    const auto report = importing::importSignal(source, {}, output);
    EXPECT_GT(report.mChannels[1].mWrittenPeak, 1.01 * report.mChannels[1].mPeak);
    EXPECT_THAT(report.mRemarks,
                Contains(AllOf(HasSubstr("peaks written differ from those recorded: channel "),
                               HasSubstr("channel 1 (UB) by +"), Not(HasSubstr("(UA)")))));
    EXPECT_THAT(report.mRemarks, Contains("status channel TRIP is not played: 0→1 at 0.125 s, 1→0 "
                                          "at 0.300 s and 4 more"));
    EXPECT_THAT(report.mRemarks, Contains(testing::StartsWith("status channel 8 is not played: ")));
    EXPECT_THAT(report.mRemarks, Contains("and 2 more status channels change, see vx-case info"));
}

/** What no power system has is taken for a slip of the recorder. */
TEST(ImportTest, NominalFrequencyIsFound)
{
    const std::tuple<double, double, const char*> rows[] = {
        {0.0, 16.7, "the recording states no nominal frequency: 16.67 Hz is taken"},
        {1e9, 60.1,
         "the recording's nominal frequency, 1e+09 Hz, is none of a power system: 60 Hz is taken"},
    };
    for (const auto& [nominal, actual, remark] : rows) {
        const TestFiles files;
        ClosedForm signal;
        signal.mHz = actual;
        ClosedFormSource source(signal, 4800.0, 1.0);
        source.mDescription.mNominalHz = nominal;
        base::ResultFile output(files.path("case.csv"));
        EXPECT_THAT(importing::importSignal(source, {}, output).mRemarks, Contains(remark));
    }
}

/** In what is the same in all phases nothing turns; the first phase tells the frequency. */
TEST(ImportTest, EqualPhasesAreFollowedByTheFirst)
{
    const TestFiles files;
    ClosedFormSource source({}, 4800.0, 1.0);
    source.mDescription.mNominalHz = 0.0;
    importing::ImportOptions options;
    importing::readAssignments("0=UA,1=UA,2=UA", options.mMapping.mAssignments);
    base::ResultFile output(files.path("case.csv"));
    const auto remarks = importing::importSignal(source, options, output).mRemarks;
    EXPECT_THAT(remarks, Contains("the three phases are equal: the first alone is followed"));
    EXPECT_THAT(remarks, Contains("the recording states no nominal frequency: 50 Hz is taken"));
    EXPECT_THAT(remarks, Contains("the frequency is followed: 50.020 to 50.020 Hz"));
}

/** Where fewer than four samples are a period, whatever the format. */
TEST(ImportTest, WhatShowsNoWaveformIsRefused)
{
    const TestFiles files;
    for (const auto& [rate, isGood] : {std::pair{200.0, true}, {190.0, false}, {5.0, false}}) {
        for (const bool isStamped : {false, true}) {
            if (isGood && isStamped) {
                continue; // one of them is enough, as it takes its time
            }
            ClosedFormSource source({}, rate, 0.4);
            if (isStamped) {
                source.mDescription.mRates.clear();
            }
            base::ResultFile output(files.path("case.csv"));
            const std::string error = errorOf([&] { importing::importSignal(source, {}, output); });
            EXPECT_EQ(error.empty(), isGood) << rate << error;
            EXPECT_THAT(error, HasSubstr(isGood ? "" : "samples a period of 50 Hz from 0 to"));
        }
    }
}

/** Only three phases turn. */
TEST(ImportTest, OrderOfPhasesIsReported)
{
    for (const auto& [assigned, isReversed] :
         {std::pair{"0=UA,1=UB,2=UC", false}, {"0=UA,1=UC,2=UB", true}, {"0=UA,1=UC,2=0", false}}) {
        importing::ImportOptions options;
        importing::readAssignments(assigned, options.mMapping.mAssignments);
        const auto remarks = import({}, 0.5, options).mReport.mRemarks;
        EXPECT_EQ(testing::Value(remarks, Contains("the phases turn in the order A, C, B")),
                  isReversed)
            << assigned;
    }
}

TEST(ImportTest, GapsAreReported)
{
    const TestFiles files;
    ClosedFormSource source({}, 4800.0, 0.5);
    source.mDescription.mRates.clear();
    source.mGapSeconds = 0.0123;
    base::ResultFile output(files.path("case.csv"));
    EXPECT_THAT(importing::importSignal(source, {}, output).mRemarks,
                Contains("no samples from 0.208125 to 0.220633 s: bridged"));
}

/** From a recording to a configuration, as its user does it. */
TEST(ImportTest, CommandMakesWhatCanBePlayed)
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
                  "S,D,1999\n1,1A,0D\n1,UA,A,,V,1,0,0,-9999,9999,1,1,P\n50\n1\n"
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
              "vx-case: " + value + ": is a value file already: it can be played as it is\n");

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
