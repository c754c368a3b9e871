#include <gtest/gtest.h>

#include <cmath>

#include "Files.h"
#include "base/Numbers.h"
#include "waveform/ImportMark.h"
#include "waveform/Measures.h"

namespace {
constexpr double kSampleRate = 4000.0; ///< samples a second

waveform::SignalDescription oneChannel(double nominalHz)
{
    waveform::SignalDescription description;
    description.mNominalHz = nominalHz;
    description.mChannels.resize(1);
    return description;
}

/** A sine of 10 V with a DC component of 1 V, in blocks of this size. */
waveform::Measures measured(const waveform::SignalDescription& description, double hertz,
                            size_t samples, size_t blockSize)
{
    waveform::Measures measures(description);
    for (size_t first = 0; first < samples; first += blockSize) {
        waveform::SignalBlock block;
        block.mFirst = first;
        block.resize(1, std::min(blockSize, samples - first));
        for (size_t i = 0; i < block.size(); ++i) {
            block.mSeconds[i] = static_cast<double>(first + i) / kSampleRate;
            block.mValues[0][i] = 1.0 + 10.0 * std::sin(base::kTwoPi * hertz * block.mSeconds[i]);
        }
        measures.add(block);
    }
    return measures;
}
} // namespace

/**
 * Sums do not depend on the blocks, which may have one sample or a few beyond a multiple of four.
 */
TEST(MeasuresTest, DoNotDependOnTheBlocks)
{
    const waveform::SignalDescription description = oneChannel(50.0);
    EXPECT_EQ(waveform::Measures(description).channel(0).mRms, 0.0);
    for (const size_t blockSize : {1, 3, 7, 80, 4000}) {
        const waveform::Measures measures = measured(description, 50.0, 4000, blockSize);
        EXPECT_EQ(measures.samples(), 4000U);
        EXPECT_DOUBLE_EQ(measures.seconds(), 3999 / kSampleRate);
        EXPECT_NEAR(measures.channel(0).mRms, std::sqrt(1.0 + 50.0), 1e-9) << blockSize;
        EXPECT_NEAR(measures.channel(0).mSmallest, -9.0, 1e-9) << blockSize;
        EXPECT_NEAR(measures.channel(0).mLargest, 11.0, 1e-9) << blockSize;
        EXPECT_NEAR(measures.frequency().mHertz, 50.0, 1e-4) << blockSize;
        EXPECT_NEAR(measures.frequency().mShare, 50.0 / 51.0, 1e-4) << blockSize;
    }
}

/** Without a nominal frequency, each usual one is tried. */
TEST(MeasuresTest, FindTheFrequency)
{
    const struct
    {
        double mNominal;
        double mHertz;
        double mExpected;
    } rows[] = {{50.0, 49.3, 49.3}, {50.0, 50.7, 50.7},  {60.0, 61.2, 61.2},   {0.0, 60.0, 60.0},
                {0.0, 16.7, 16.7},  {0.0, 50.02, 50.02}, {400.0, 401.5, 401.5}};
    for (const auto& row : rows) {
        const waveform::SignalDescription description = oneChannel(row.mNominal);
        const auto result = measured(description, row.mHertz, 8000, 360).frequency();
        EXPECT_NEAR(result.mHertz, row.mExpected, 0.005) << row.mHertz;
        EXPECT_LE(result.mFrom, 2.0 / row.mHertz) << row.mHertz;
        EXPECT_GE(result.mTo, 2.0 - 3.0 / row.mHertz) << row.mHertz;
        EXPECT_LE(result.mTo, 2.0 + 1.0 / row.mHertz) << row.mHertz;
    }
}

/** The purer one if a share is below 0.9 of the other; otherwise the one with the smaller error. */
TEST(FrequencyMeterTest, TakesTheBetterOfTwoResults)
{
    using Result = waveform::FrequencyMeter::Result;
    const struct
    {
        Result mA;
        Result mB;
        bool mIsA;
    } rows[] = {
        {{50, 1.0, 0.5}, {60, 0.89, 0.1}, true},
        {{50, 1.0, 0.5}, {60, 0.91, 0.1}, false},
        {{50, 0.5, 0.1}, {60, 0.6, 0.5}, false},
        {{50, 0.5, 0.1}, {60, 0.55, 0.5}, true},
        {{50, 0.5, 0.2}, {60, 0.5, 0.1}, false},
        {{50, 0.5, 0.2}, {60, 0.5, 0.2}, true},
        {{}, {60, 0.3, 0.2}, false},
        {{50, 0.3, 0.2}, {}, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(waveform::FrequencyMeter::betterOf(row.mA, row.mB).mHertz,
                  row.mIsA ? row.mA.mHertz : row.mB.mHertz)
            << row.mA.mShare << ' ' << row.mB.mShare;
    }
}

/** The comments of an import are read back; other comments and invalid channels are ignored. */
TEST(ImportMarkTest, ReadsBackAsWritten)
{
    const TestFiles files;
    const waveform::ImportMark written{
        "my, 3 s of the recording.cfg", "2020-02-01 03:04:05.1", 1.25, {}};
    std::string text = "# of an import\n# " + importComment(written) + "\n";
    for (const size_t channel : {size_t{0}, size_t{7}, size_t{8}, size_t{4'000'000'000}}) {
        text += "# " + waveform::sourceComment(channel, "I, A: x", 1000.5, "kA") + "\n";
    }
    text += "# channel 1: no factor\n# channel -1: I, 1 counts for 1 A\n" + valueLine("1", "50") +
            "# channel 2: late, 1 counts for 1 A\n";
    const auto read = waveform::readImportMark(files.make("a.csv", text).toStdString());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->mFile, "my, 3 s of the recording.cfg");
    EXPECT_EQ(read->mStart, written.mStart);
    EXPECT_EQ(read->mSeconds, 1.25);
    EXPECT_EQ(read->mSources,
              (std::vector<std::string>{"I, A: x", "", "", "", "", "", "", "I, A: x"}));

    for (const char* const other :
         {"# begins at x s of the recording a.cfg\n", "# begins at 1 s of something\n",
          "begins at 1 s of the recording a.cfg\n", "\n# begins at 1 s of the recording a.cfg\n",
          ""}) {
        EXPECT_FALSE(waveform::readImportMark(files.make("b.csv", other).toStdString())) << other;
    }
    const auto bare = waveform::readImportMark(
        files.make("c.csv", "# begins at -0.5 s of the recording a.cfg\n").toStdString());
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->mStart, "");
    EXPECT_EQ(bare->mSeconds, -0.5);
}
