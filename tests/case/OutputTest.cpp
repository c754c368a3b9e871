#include <gmock/gmock.h>

#include "CommandRunner.h"
#include "SampleRecord.h"

using testing::EndsWith;
using testing::HasSubstr;

namespace {
/** A period of 50 Hz whose values differ. */
std::string valueFile()
{
    std::string text;
    for (int i = 0; i < kSamplesPerPeriod; ++i) {
        text += valueLine(std::to_string(i), "50");
    }
    return text;
}

/** What a driver was given that played the file once. */
std::string recordingOf(int samples)
{
    std::string bytes;
    for (int i = 0; i < samples; ++i) {
        SampleRecord record{};
        record.mSeconds = 1'700'000'000;
        record.mNanoseconds = static_cast<quint32>(i) * 55'555;
        record.mAuxWord = static_cast<quint32>(i);
        record.mFlags = 0;
        for (int channel = 0; channel < kChannelCount; ++channel) {
            record.mValues[channel] = channel + 1;
        }
        bytes.append(reinterpret_cast<const char*>(&record), sizeof(record));
    }
    return bytes;
}
} // namespace

/** What the tool does with the files that it writes, for every subcommand. */
class OutputTest : public testing::Test
{
protected:
    OutputTest()
    {
        mRunner.writeFile("v.csv", valueFile());
        mRunner.writeFile("c.conf", "0,1,v.csv\n");
        mRunner.writeFile("r.bin", recordingOf(kSamplesPerPeriod));
        // Whether pictures are drawn is not the question, and gnuplot need not be there.
        mRunner.writeFile("gnuplot", "#!/bin/sh\nexec cat\n");
        mRunner.run({"chmod", "+x", mRunner.path("gnuplot")});
    }

    /** Runs a line of the shell, in which vx-case is the tool. */
    CommandResult shell(const std::string& line) const
    {
        return mRunner.run({"sh", "-c", "PATH=.:$(dirname " VX_CASE "):$PATH; " + line});
    }

    CommandRunner mRunner;
};

TEST_F(OutputTest, NoLostByteGoesUnnoticed)
{
    for (const char* const arguments :
         {"--help", "--version", "generate --list", "generate --duration 0.02", "check c.conf",
          "check --json c.conf", "info v.csv", "info --json v.csv", "explain r.bin --config c.conf",
          "explain r.bin --config c.conf --json", "plot v.csv"}) {
        const CommandResult result = shell(std::string("vx-case ") + arguments + " >/dev/full");
        EXPECT_EQ(result.mExitCode, 1) << arguments;
        EXPECT_THAT(result.mErrors, EndsWith("vx-case: standard output: No space left on device\n"))
            << arguments;
    }
    // The first block fits, a part of the next one too.
    const CommandResult full =
        shell("trap '' XFSZ; ulimit -f 200; vx-case generate --duration 0.2 -o big.csv");
    EXPECT_EQ(full.mExitCode, 1);
    EXPECT_EQ(full.mErrors, "vx-case: big.csv: File too large\n");
    EXPECT_EQ(mRunner.readFile("big.csv"), "");
}

/** As any command whose reader has seen enough, whether or not its parent ignores the signal. */
TEST_F(OutputTest, AClosedPipeEndsQuietly)
{
    for (const char* const before : {"", "trap '' PIPE; "}) {
        const CommandResult result =
            shell(std::string(before) + "vx-case generate --duration 5 | head -n 1");
        EXPECT_EQ(result.mErrors, "") << before;
        EXPECT_EQ(result.mOutput, "# made by vx-case generate --duration 5\n") << before;
    }
}
