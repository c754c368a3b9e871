#include <gmock/gmock.h>

#include <filesystem>
#include <map>

#include "CommandRunner.h"
#include "SampleRecord.h"

using testing::EndsWith;

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

/** A recording in which the file was played once. */
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

/** How the subcommands handle the files that they write. */
class OutputTest : public testing::Test
{
protected:
    OutputTest()
    {
        mRunner.writeFile("v.csv", valueFile());
        mRunner.writeFile("c.conf", "0,1,v.csv\n");
        mRunner.writeFile("r.bin", recordingOf(kSamplesPerPeriod));
        // Pictures are not tested here, so gnuplot need not be installed.
        mRunner.writeFile("gnuplot", "#!/bin/sh\nexec cat\n");
        mRunner.run({"chmod", "+x", mRunner.path("gnuplot")});
    }

    /** Runs a shell command in which vx-case is the tool. */
    CommandResult shell(const std::string& line) const
    {
        return mRunner.run({"sh", "-c", "PATH=.:$(dirname " VX_CASE "):$PATH; " + line});
    }

    /** The content of every file by its path, without those of the runner. */
    std::map<std::string, std::string> allFiles() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(mRunner.path(""))) {
            if (entry.is_regular_file() && entry.path().filename().string()[0] != '.') {
                files[entry.path()] = readFile(entry.path());
            }
        }
        return files;
    }

    CommandRunner mRunner;
};

TEST_F(OutputTest, LostBytesAreReported)
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

/** Like any command whose reader has ended, whether or not its parent ignores the signal. */
TEST_F(OutputTest, ClosedPipeEndsQuietly)
{
    for (const char* const before : {"", "trap '' PIPE; "}) {
        const CommandResult result =
            shell(std::string(before) + "vx-case generate --duration 5 | head -n 1");
        EXPECT_EQ(result.mErrors, "") << before;
        EXPECT_EQ(result.mOutput, "# made by vx-case generate --duration 5\n") << before;
    }
}

TEST_F(OutputTest, NoCommandOverwritesItsInput)
{
    mRunner.writeFile("e.jsonl", "");
    mRunner.writeFile("there.csv", "an older result\n");
    ASSERT_EQ(shell("cp r.bin run.dat && cp v.csv v.svg && cp v.csv c.svg && touch e.svg && "
                    "echo 0,1,c.svg >> c.conf && mkdir dir && ln v.csv dir/hard.csv && ln -s "
                    "../v.csv dir/soft.csv && "
                    "ln -s dir linked && ln -s there.csv link && cp v.csv dir/sub.csv && "
                    "echo 0,1,sub.csv > sub.conf && vx-case export v.csv -o rec.cfg")
                  .mExitCode,
              0);
    const auto before = allFiles();
    const std::string events = "explain r.bin --config c.conf --events e.jsonl -o ";
    const std::string sub = "explain r.bin --config sub.conf --directory dir -o ";
    const struct
    {
        std::string mArguments;
        std::string mError;
    } rows[] = {
        {"import rec.cfg -o rec.cfg", "rec.cfg: -o would overwrite the recording rec.cfg"},
        {"import rec.cfg -o ./rec.dat", "./rec.dat: -o would overwrite the recording rec.dat"},
        {"import rec.dat -o rec.cfg", "rec.cfg: -o would overwrite the recording rec.cfg"},
        {"import rec.cfg -o n.csv --configuration n.csv",
         "n.csv: --configuration is the same file as -o n.csv"},
        {"import rec.cfg -o n.csv --configuration rec.dat",
         "rec.dat: --configuration would overwrite the recording rec.dat"},
        {"import rec.cfg -o dir/n.csv --configuration linked/n.csv",
         "linked/n.csv: --configuration is the same file as -o dir/n.csv"},
        {"import rec.cfg -o there.csv --configuration link",
         "link: --configuration is the same file as -o there.csv"},
        {"export v.csv -o v.csv", "v.csv: -o would overwrite the input v.csv"},
        {"export v.csv -o dir/hard.csv", "dir/hard.csv: -o would overwrite the input v.csv"},
        {"export v.csv -o linked/soft.csv", "linked/soft.csv: -o would overwrite the input v.csv"},
        {"export dir/../v.csv -o v.csv", "v.csv: -o would overwrite the input dir/../v.csv"},
        {"export run.dat -o run.cfg", "run.dat: the data of -o would overwrite the input run.dat"},
        {events + "r.bin", "r.bin: -o would overwrite the recording r.bin"},
        {events + "c.conf", "c.conf: -o would overwrite the configuration c.conf"},
        {events + "v.csv", "v.csv: -o would overwrite the value file v.csv"},
        {events + "e.jsonl", "e.jsonl: -o would overwrite --events e.jsonl"},
        {sub + "linked/sub.csv", "linked/sub.csv: -o would overwrite the value file dir/sub.csv"},
        {"plot run.dat v.svg -o v.svg", "v.svg: -o would overwrite the input v.svg"},
        {"plot run.dat --events e.svg -o e.svg", "e.svg: -o would overwrite --events e.svg"},
        {"plot run.dat --config c.conf -o c.svg", "c.svg: -o would overwrite the value file c.svg"},
        {"generate -o dir/n.csv --truth dir/../dir/n.csv",
         "dir/../dir/n.csv: --truth is the same file as -o dir/n.csv"},
    };
    for (const auto& row : rows) {
        const CommandResult result = mRunner.run(split(VX_CASE + (" " + row.mArguments)));
        EXPECT_EQ(result.mExitCode, 2) << row.mArguments;
        EXPECT_EQ(result.mErrors, "vx-case: " + row.mError + "; name another file; see --help\n");
        EXPECT_TRUE(allFiles() == before) << row.mArguments;
    }
}

/** Results whose names the user did not give only replace earlier results. */
TEST_F(OutputTest, AdditionalResultsReplaceNothing)
{
    ASSERT_EQ(shell("mkdir own values same && echo mine > own/vx-simulator.conf && "
                    "echo mine > values/dip-0-one-50hz.json && echo mine > u.dat && "
                    "vx-case catalogue same dip-0-one-50hz && vx-case export v.csv -o old.cfg")
                  .mExitCode,
              0);
    const std::string other = "exists with other content; remove it or name another directory";
    const std::tuple<const char*, int, std::string> rows[] = {
        {"catalogue own dip-0-one-50hz", 1, mRunner.path("own/vx-simulator.conf: ") + other},
        {"catalogue values dip-0-one-50hz", 1,
         mRunner.path("values/dip-0-one-50hz.json: ") + other},
        {"catalogue same dip-0-one-50hz", 0, ""},
        {"catalogue same dip-0-half-50hz", 1, mRunner.path("same/vx-simulator.conf: ") + other},
        {"export v.csv -o u.cfg", 2,
         "u.dat: the data of -o would overwrite it, and there is no "
         "u.cfg that it belongs to; name another file; see --help"},
        {"export v.csv -o old.cfg", 0, ""},
    };
    for (const auto& [arguments, exitCode, error] : rows) {
        const auto before = allFiles();
        const CommandResult result = shell(std::string("vx-case ") + arguments);
        EXPECT_EQ(result.mExitCode, exitCode) << arguments;
        EXPECT_EQ(result.mErrors, error.empty() ? "" : "vx-case: " + error + "\n");
        for (const auto& [path, bytes] : before) {
            EXPECT_EQ(readFile(path), bytes) << arguments << ' ' << path;
        }
    }
    EXPECT_EQ(mRunner.readFile("values/vx-simulator.conf"), "");
}

/** Names that a line of a case configuration, or a comment, cannot contain are refused. */
TEST_F(OutputTest, ConfigurationsOfImportsHaveValidNames)
{
    ASSERT_EQ(shell("vx-case export v.csv -o 'a\nb.cfg'").mExitCode, 0);
    for (const char* const name : {"n,1.csv", "n#1.csv", "n\n1.csv", "n\t1.csv", "n  1.csv"}) {
        const CommandResult result =
            mRunner.run({VX_CASE, "import", "a\nb.cfg", "-o", name, "--configuration", "n.conf"});
        EXPECT_EQ(result.mExitCode, 1) << name;
        EXPECT_THAT(result.mErrors,
                    EndsWith("csv: a case configuration cannot have this path; expected one "
                             "without ',', '#', line ends and repeated blanks\n"));
        EXPECT_EQ(mRunner.readFile(name) + mRunner.readFile("n.conf"), "") << name;
    }
    EXPECT_EQ(
        mRunner.run({VX_CASE, "import", "a\nb.cfg", "-o", "n 1.csv", "--configuration", "n.conf"})
            .mExitCode,
        0);
    EXPECT_EQ(shell("vx-case check n.conf").mExitCode, 0);
}
