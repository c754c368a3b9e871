#include <gmock/gmock.h>

#include <tuple>

#include "ClosedFormImport.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

TEST(ImportReportTest, ReportsWhatWasDone)
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
        EXPECT_THAT(importError(options), HasSubstr("expected a part of 0 to 0.5 s"));
    }
}

/** Few samples per period, which miss the crests; and changes of states, in the order of time. */
TEST(ImportReportTest, PeaksAndStatesAreReported)
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

/** A frequency that no power system has is taken for an error of the recorder. */
TEST(ImportReportTest, NominalFrequencyIsFound)
{
    const std::tuple<double, double, const char*> rows[] = {
        {0.0, 16.7, "the recording states no nominal frequency: 16.67 Hz is assumed"},
        {1e9, 60.1,
         "the recording's nominal frequency, 1e+09 Hz, is not one of a power system: 60 Hz is "
         "assumed"},
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

/** Equal phases do not rotate, so the first one gives the frequency. */
TEST(ImportReportTest, EqualPhasesAreFollowedByTheFirst)
{
    const TestFiles files;
    ClosedFormSource source({}, 4800.0, 1.0);
    source.mDescription.mNominalHz = 0.0;
    importing::ImportOptions options;
    importing::readAssignments("0=UA,1=UA,2=UA", options.mMapping.mAssignments);
    base::ResultFile output(files.path("case.csv"));
    const auto remarks = importing::importSignal(source, options, output).mRemarks;
    EXPECT_THAT(remarks, Contains("the three phases are equal: the first alone is followed"));
    EXPECT_THAT(remarks, Contains("the recording states no nominal frequency: 50 Hz is assumed"));
    EXPECT_THAT(remarks, Contains("the frequency is followed: 50.020 to 50.020 Hz"));
}

/** Fewer than four samples per period, in any format. */
TEST(ImportReportTest, RejectsRecordingsWithoutAWaveform)
{
    const TestFiles files;
    for (const auto& [rate, isGood] : {std::pair{200.0, true}, {190.0, false}, {5.0, false}}) {
        for (const bool isStamped : {false, true}) {
            if (isGood && isStamped) {
                continue; // one of them is enough, because it is slow
            }
            ClosedFormSource source({}, rate, 0.4);
            if (isStamped) {
                source.mDescription.mRates.clear();
            }
            base::ResultFile output(files.path("case.csv"));
            const std::string error =
                errorIfAny([&] { importing::importSignal(source, {}, output); });
            EXPECT_EQ(error.empty(), isGood) << rate << error;
            EXPECT_THAT(error, HasSubstr(isGood ? "" : "samples per period of 50 Hz from 0 to"));
        }
    }
}

/** The order is known only for three phases. */
TEST(ImportReportTest, OrderOfPhasesIsReported)
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

TEST(ImportReportTest, GapsAreReported)
{
    const TestFiles files;
    ClosedFormSource source({}, 4800.0, 0.5);
    source.mDescription.mRates.clear();
    source.mGapSeconds = 0.0123;
    base::ResultFile output(files.path("case.csv"));
    EXPECT_THAT(importing::importSignal(source, {}, output).mRemarks,
                Contains("no samples from 0.208125 to 0.220633 s: bridged"));
}
