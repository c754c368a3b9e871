#include <QRegularExpression>
#include <algorithm>
#include <filesystem>

#include "Files.h"
#include "FixedPaths.h"
#include "SandboxedTest.h"
#include "Sanitizer.h"

namespace {
using testing::HasSubstr;

struct Write
{
    std::string mPath;
    int mBytes;
    int mOffset;
    bool mIsAccepted;
};

const std::vector<Write> kWrites = {
    {kSampleBufferPath, 48, 0, true},
    {kSampleBufferPath, 360 * 48, 48, true},
    {kSampleBufferPath, 47, 0, false},
    {kSampleBufferPath, 49, 0, false},
    {kSampleBufferPath, 360 * 48 + 1, 0, false},
    {kSampleBufferPath, 361 * 48, 0, false},
    {kF2hPath, 16, 0, true},
    {kF2hPath, 16, 0, true},
    {kF2hPath, 16, 16, false},
    {kF2hPath, 15, 0, false},
    {kR2hPath, 48, 0, true},
    {kR2hPath, 48, 48, false},
    {kR2hPath, 47, 0, false},
    {kR2hPath, 96, 0, false},
    {kD2hPath, 1, 0, true},
    {kD2hPath, 5000, 1, true},
};

/** A command that makes the write in one system call and prints its exit code. */
std::string commandOf(const Write& write)
{
    return "dd if=/dev/zero of=" + write.mPath + " bs=" + std::to_string(write.mBytes) +
           " count=1 seek=" + std::to_string(write.mOffset) +
           " oflag=seek_bytes conv=notrunc status=none; echo $?\n";
}

/** How the sandbox ends, and its message. */
struct Ending
{
    const char* mArguments; ///< "|" between them
    int mExitCode;
    const char* mErrors;
};

constexpr char kNoBlock[] =
    "the program ended before its first block; --for and --send count from it";

constexpr Ending kEndings[] = {
    {"sh|-c|exit $#|sh|--for|[a,b]|--", 3, ""},
    {"cat|/sys/devices/platform/vxadc-sim/h2p", 0, ""},
    {"--for|0.1|sh|-c|sleep 0.5; head -c 48 /dev/zero >/dev/adc-in; exec sleep 60", 0, ""},
    {"--record|no/such/file|true", 125, "cannot write no/such/file: No such file or directory"},
    {"--record|/dev/full|sh|-c|head -c 48 /dev/zero >/dev/adc-in", 125,
     "cannot write /dev/full: No space left on device; nothing more is written to it"},
    {"--for|9|--|sh|-c|head -c 48 /dev/zero >/dev/adc-in; kill -TERM $$", 143,
     "the program ended by signal 15 (Terminated)"},
    {"--for|0.1|sh|-c|trap 'kill -SEGV $$' TERM; head -c 48 /dev/zero >/dev/adc-in; sleep 3 & "
     "wait",
     139, "the program ended by signal 11 (Segmentation fault)"},
    {"--for|1|--|sh|-c|exit 3", 3, kNoBlock},
    {"--for|1|true", 124, kNoBlock},
    {"--send|1:s1|true", 0, kNoBlock},
    {"--fault|adc-in:1:short=480|sh|-c|head -c 48 /dev/zero >/dev/adc-in", 0, ""},
    {"--fault|adc-in:0s:EIO|sh|-c|head -c 48 /dev/zero >/dev/adc-in", 0,
     "the program ended before any write triggered the fault adc-in:0s:EIO"},
    {"--record|kept|sh|-c|head -c 48 /dev/zero >/dev/adc-in; until [ -s kept ]; do sleep 0.1; done",
     0, ""},
    {"--for|1|--patience|0.2|sleep|60", 124, "no block arrived within 0.2 s; ending the program"},
    {"--events|killed|--for|0|sh|-c|trap '' TERM; head -c 48 /dev/zero >/dev/adc-in; while :; do "
     "sleep 1; done",
     0, "the program is still running 5 s after SIGTERM; killing it"},
    {"sh|-c|trap 'exit 5' INT; kill -INT $PPID; while :; do sleep 0.1; done", 5, ""},
    {"sh|-c|trap 'exit 6' TERM; kill -TERM $PPID; while :; do sleep 0.1; done", 6, ""},
    {"sh|-c|trap 'exit 7' HUP; kill -HUP $PPID; while :; do sleep 0.1; done", 7, ""},
    {"--send|0.1:s1|--send|9:s2|sh|-c|head -c 48 /dev/zero >/dev/adc-in; sleep 2", 0,
     "cannot send \"s1\" to /etc/vx/simulator_control: No such file or directory\n"
     "vx-sandbox: the program ended before 1 of the --send commands were due"},
    {"sh|-c|head -c 47 /dev/zero 2>/dev/null >/dev/adc-in", 1,
     "refused a write of 47 bytes at offset 0: /dev/adc-in takes 1 to 360 whole records of 48 "
     "bytes"},
    {"--|./no-such-program", 127, "cannot run ./no-such-program: No such file or directory"},
    {"--|/etc/passwd", 126, "cannot run /etc/passwd: Permission denied"},
    {"--nonsense|--|true", 125, "unknown option --nonsense; see --help"},
    {"--for|1", 125, "there is no program to run; see --help"},
    {"--for", 125, "--for: 1 required SECONDS missing"},
    {"--patience|1|true", 125, "--patience requires --for"},
    {"--record||true", 125, "--record: takes the name of a file"},
    {"--record|new|--events|./new|true", 125,
     "./new: --events is the same file as --record new; name another file"},
    {"--pme|track.xml|cat|--config=./track.xml", 125,
     "track.xml: --pme would overwrite the program's argument ./track.xml; name another file"},
    {"--record|v.csv|true|--config=cases.conf", 125,
     "v.csv: --record would overwrite the value file v.csv; name another file"},
    {"--record|v.csv|true|--config|cases.conf", 125,
     "v.csv: --record would overwrite the value file v.csv; name another file"},
    {"-h", 0, ""},
    {"--version", 0, ""},
    {"-v", 0, ""},
    {"--for|1x|true", 125, "--for takes seconds, 0 to 1000000000, not \"1x\""},
    {"--send|s1|true", 125, "--send takes SECONDS:COMMAND, not \"s1\""},
};

/** The lines of --events that are not of the driver, without their times. */
std::string endOf(const std::string& events)
{
    static const QRegularExpression kWriteOfTheDriver(R"(\{"t":\d+,"file":"adc-in".*\n)");
    static const QRegularExpression kTime(R"("t":\d+,)");
    return QString::fromStdString(events).remove(kWriteOfTheDriver).remove(kTime).toStdString();
}
} // namespace

/** The guarantees of the sandbox for any program. */
class SandboxTest : public SandboxedTest
{
protected:
    CommandResult shell(const std::string& script, const Words& options = {}) const
    {
        return sandbox(options, {"sh", "-c", script});
    }
};

TEST_F(SandboxTest, DriverAcceptsWhatItsRulesAllow)
{
    std::string script;
    std::string recorded;
    std::string expectedCodes;
    for (const Write& it : kWrites) {
        script += commandOf(it);
        expectedCodes += it.mIsAccepted ? "0\n" : "1\n";
        const bool isRecorded = it.mIsAccepted && it.mPath == kSampleBufferPath;
        recorded.append(isRecorded ? static_cast<std::size_t>(it.mBytes) : 0, '\0');
    }
    const CommandResult result =
        shell(script, {"--events", "events.jsonl", "--record", "record.bin"});
    SCOPED_TRACE(testing::PrintToString(result));
    EXPECT_EQ(programOutput(result), expectedCodes);
    EXPECT_EQ(mRunner.readFile("record.bin"), recorded);
    auto rows = summary(result);
    EXPECT_EQ(rows["refused writes"],
              std::to_string(std::count(expectedCodes.begin(), expectedCodes.end(), '1')));
    EXPECT_EQ(rows["samples"], "361");
    EXPECT_EQ(rows["f2h writes"], "2");
    EXPECT_EQ(rows["r2h writes"], "1");
    EXPECT_GT(std::stod(rows["lag on arrival"]), 1e12) << "ms since the epoch";
    EXPECT_EQ(std::stod(rows["lead on arrival"]), 0);

    const std::vector<Event> events = eventsOf(mRunner.readFile("events.jsonl"));
    ASSERT_EQ(events.size(), kWrites.size());
    for (std::size_t at = 0; at < events.size(); ++at) {
        SCOPED_TRACE(commandOf(kWrites[at]));
        EXPECT_EQ(events[at].mFile, std::filesystem::path(kWrites[at].mPath).filename());
        EXPECT_EQ(events[at].mBytes, kWrites[at].mBytes);
        EXPECT_EQ(events[at].mIsAccepted, kWrites[at].mIsAccepted);
        EXPECT_TRUE(at == 0 || events[at].mArrivalNs > events[at - 1].mArrivalNs);
    }
}

TEST_F(SandboxTest, SendCountsFromTheFirstBlock)
{
    const CommandResult result = shell(
        "mkfifo /etc/vx/simulator_control; sleep 0.3; date +%s%N\n"
        "head -c 48 /dev/zero >/dev/adc-in\n"
        "head -n 2 <>/etc/vx/simulator_control; date +%s%N",
        {"--send", "0.4:second one", "--send", "0.2:s1"});
    EXPECT_EQ(result.mExitCode, 0) << result;
    const Words lines = split(programOutput(result), '\n');
    ASSERT_EQ(lines.size(), 4U) << result;
    EXPECT_EQ(lines[1], "s1");
    EXPECT_EQ(lines[2], "second one");
    EXPECT_GE(std::stoll(lines[3]) - std::stoll(lines[0]), 400'000'000);
}

/** At the end of the input the program is stopped; its own input is empty. */
TEST_F(SandboxTest, CommandsOfStandardInputAreSentUntilItEnds)
{
    mRunner.writeFile("program",
                      "mkfifo /etc/vx/simulator_control\n"
                      "cat >input; exec 5<>/etc/vx/simulator_control; touch ready\n"
                      "head -n 2 <&5 >taken; touch done; exec sleep 60\n");
    const CommandResult result = mRunner.run(
        {"sh", "-c",
         "{ until [ -e ready ]; do sleep 0.05; done; printf 's1\\nsecond'; sleep 0.1\n"
         "printf ' one\\nunfinished'; until [ -e done ]; do sleep 0.05; done; } |\n" VX_SANDBOX
         " --send - --events e sh program"});
    EXPECT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(mRunner.readFile("input"), "");
    EXPECT_EQ(mRunner.readFile("taken"), "s1\nsecond one\n");
    const auto sent = [](const char* bytes, const std::string& text) {
        return std::string(R"({"file":"simulator_control","bytes":)") + bytes +
               R"(,"accepted":true,"text":")" + text + "\"}\n";
    };
    EXPECT_EQ(endOf(mRunner.readFile("e")), sent("3", "s1") + sent("11", "second one") +
                                                R"({"program":"stopped"})"
                                                "\n"
                                                R"({"run":"ended","reason":"input ended"})"
                                                "\n");
}

TEST_F(SandboxTest, ExitCodesAndMessages)
{
    mRunner.writeFile("cases.conf", "x\n0,1,v.csv\n");
    mRunner.writeFile("v.csv", "values");
    for (const Ending& it : kEndings) {
        SCOPED_TRACE(it.mArguments);
        const CommandResult result = sandbox(split(it.mArguments, '|'));
        EXPECT_EQ(result.mExitCode, it.mExitCode);
        const std::string message = std::string("vx-sandbox: ") + it.mErrors + "\n";
        EXPECT_EQ(result.mErrors, *it.mErrors == 0 ? "" : message);
    }
    EXPECT_THAT(endOf(mRunner.readFile("killed")), HasSubstr(R"("stopped","signal":9)"));
    EXPECT_EQ(mRunner.readFile("v.csv"), "values");
    EXPECT_THAT(mRunner.readFile("track.xml"), HasSubstr("</log4j:configuration>"));
}

TEST_F(SandboxTest, LostResultIsAFailure)
{
    for (const std::string arguments : {"true", "--help"}) {
        const CommandResult result =
            mRunner.run({"sh", "-c", "exec " VX_SANDBOX " " + arguments + " >/dev/full"});
        EXPECT_EQ(result.mExitCode, 125);
        EXPECT_THAT(result.mErrors,
                    testing::EndsWith(
                        "vx-sandbox: cannot write to standard output: No space left on device\n"));
    }
}

/** Everything that a judge of the run knows about its end. */
TEST_F(SandboxTest, EventsTellHowTheRunEnded)
{
    const std::string block = "head -c 48 /dev/zero >/dev/adc-in; ";
    const auto unsent = [](const std::string& text, const std::string& reason) {
        return R"({"file":"simulator_control","bytes":3,"accepted":false,"text":")" + text +
               R"(","reason":")" + reason + "\"}\n";
    };
    const auto ended = [](const std::string& program, const std::string& reason) {
        return (program.empty() ? "" : "{\"program\":" + program + "}\n") +
               R"({"run":"ended","reason":")" + reason + "\"}\n";
    };
    const struct
    {
        Words mOptions;
        std::string mScript;
        std::string mEnd; ///< the last lines of the events, see endOf()
    } rows[] = {
        {{}, "exit 3", ended(R"("exited","status":3)", "program")},
        {{"--send", "0:s1", "--send", "9:s2"},
         block + "until grep -q s1 e; do sleep 0.1; done; kill -USR1 $$",
         unsent("s1", "No such file or directory") + unsent("s2", "the run ended before") +
             ended(R"("killed","signal":10)", "program")},
        {{"--for", "0"}, block + "exec sleep 60", ended(R"("stopped")", "time")},
        {{"--for", "0"},
         "trap 'kill -SEGV $$' TERM; " + block + "sleep 60 & wait",
         ended(R"("killed","signal":11)", "program")},
        {{"--for", "1", "--patience", "0.1"}, "exec sleep 60", ended(R"("stopped")", "no block")},
        {{},
         "trap 'exit 5' INT; kill -INT $PPID; sleep 60 & wait",
         ended(R"("stopped")", "interrupted")},
        {{"--send", "0:s1"},
         "exec sleep 60 & kill -HUP $PPID; wait",
         unsent("s1", "the run ended before") + ended(R"("stopped")", "interrupted")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mScript);
        const CommandResult result = shell(row.mScript, joined({"--events", "e"}, row.mOptions));
        EXPECT_EQ(endOf(mRunner.readFile("e")), row.mEnd) << result;
    }
    sandbox({"--events", "e", "./no-such-program"});
    EXPECT_EQ(endOf(mRunner.readFile("e")), ended("", "not started"));
#ifndef VX_HAS_ADDRESS_SANITIZER // the sanitizers need descriptors of their own
    // Without a descriptor for what it needs next, the sandbox itself fails.
    mRunner.run({"sh", "-c", "ulimit -n 6; exec " VX_SANDBOX " --events e --send 1:s1 true"});
    EXPECT_EQ(endOf(mRunner.readFile("e")),
              unsent("s1", "the run ended before") + ended("", "error"));
#endif
}

/** Even root is refused, as with the real attributes. */
TEST_F(SandboxTest, FilesOpenForReadingOrForWriting)
{
    const CommandResult result = shell(
        "for file in /dev/adc-in /dev/pme-sim /sys/devices/platform/vxadc-sim/*; do\n"
        "  for mode in '<' '>' '<>'; do eval \"(: $mode$file)\" && printf y || printf n; done\n"
        "  echo \" ${file##*/}\"\n"
        "done 2>errors; grep -c 'Permission denied' errors",
        {"--pme", "pme.bin"});
    EXPECT_EQ(summary(result)["PME frames"], "0");
    EXPECT_EQ(programOutput(result),
              "nyn adc-in\nnyn pme-sim\nnyn d2h\nnyn f2h\nynn h2p\nnyn r2h\n12\n");
}

/** Each script ends when the last process that holds its pipe ends. */
TEST_F(SandboxTest, NoProcessOutlivesIt)
{
    for (const char* script :
         {" sh -c 'sleep 600 & (trap \"\" TERM; setsid sleep 600 &) & exit 3' | cat",
          " sh -c 'echo $PPID; exec sleep 600' | { read pid; kill -KILL $pid; cat; }"}) {
        SCOPED_TRACE(script);
        EXPECT_EQ(mRunner.run({"sh", "-c", VX_SANDBOX + std::string(script)}).mExitCode, 0);
    }
    // Those that were there before it stay.
    EXPECT_EQ(mRunner
                  .run({"sh", "-c",
                        "(sleep 600 & echo $! >pid; exec " VX_SANDBOX " true); kill $(cat pid)"})
                  .mExitCode,
              0);
}

TEST_F(SandboxTest, PrintsThePathOfTheFifo)
{
    const CommandResult result = mRunner.run(
        {"sh", "-c",
         VX_SANDBOX
         " sh -c 'mkfifo /etc/vx/simulator_control; head -n 1 "
         "<>/etc/vx/simulator_control' 2>errors &\n"
         "until fifo=$(sed -n 's/.* is //p' errors) && test -p \"$fifo\"; do sleep 0.01; "
         "done\n"
         "echo s1 >\"$fifo\"; wait"});
    EXPECT_EQ(programOutput(result), "s1\n") << result;
}

TEST_F(SandboxTest, NothingChangesOnTheHost)
{
    using std::filesystem::exists;
    const std::string mounts = readFile("/proc/self/mountinfo");
    const bool hasEtcVx = exists("/etc/vx");
    const CommandResult result =
        shell("touch /etc/vx/marker /dev/marker; head -c 48 /dev/zero >/dev/adc-in; ls /etc/vx");
    EXPECT_EQ(programOutput(result), "marker\n") << result;
    EXPECT_EQ(readFile("/proc/self/mountinfo"), mounts);
    EXPECT_EQ(exists("/etc/vx"), hasEtcVx);
    for (const char* path : {"/etc/vx/marker", "/dev/marker", kH2pPath}) {
        EXPECT_FALSE(exists(path)) << path;
    }
}

TEST_F(SandboxTest, DevIsPrivateAndTheRestOfEtcIsTheHosts)
{
    mRunner.writeFile("listing.sh",
                      "cd /etc; find . -maxdepth 1 ! -path ./vx | sort\n"
                      "cksum passwd hostname ld.so.conf.d/* 2>&1\n");
    const CommandResult outside = mRunner.run({"sh", "listing.sh"});
    const CommandResult inside = sandbox({}, {"sh", "listing.sh"});
    EXPECT_EQ(programOutput(inside), outside.mOutput);
    EXPECT_THAT(outside.mOutput, HasSubstr("./passwd\n"));

    const CommandResult dev = shell(
        "for node in null zero full random urandom tty; do\n"
        "  test -c /dev/$node || echo \"no $node\"\n"
        "done\n"
        "find /dev -type b\n"
        "test -w /dev/adc-in && test -d /dev/pts && test -L /dev/fd || echo incomplete\n"
        "test -w /etc/vx || echo not writable\n"
        "cd /sys/devices/platform/vxadc-sim; ls\n"
        "echo text >/dev/null && head -c 2 /dev/zero | od -An -tx1");
    EXPECT_EQ(programOutput(dev), "d2h\nf2h\nh2p\nr2h\n 00 00\n") << dev;
}

TEST_F(SandboxTest, InvalidFaultsAreRejected)
{
    for (const char* text :
         {"", "adc-in", "adc-in:1", "nowhere:1:EIO", "adc-in:0:EIO", "f2h:-1:EIO", "f2h:1:EFOO",
          "f2h:1:short=", "adc-in:1:short=47", "f2h:1:stall=x", "f2h:1:EIO:0", "f2h:1:EIO:1:1",
          "f2h:s:EIO", "f2h::EIO"}) {
        const CommandResult result = sandbox({"--fault", text}, {"true"});
        EXPECT_EQ(result.mExitCode, 125) << text << result;
        EXPECT_THAT(result.mErrors, HasSubstr("--fault takes ")) << text;
    }
}

TEST_F(SandboxTest, VanishedFileCannotBeFound)
{
    const CommandResult result =
        sandbox({"--events", "e", "--fault", "adc-in:2:vanish", "--fault", "r2h:9:EIO"},
                {"sh", "-c",
                 "try() { head -c 48 /dev/zero >/dev/adc-in && test -e /dev/adc-in; "
                 "echo $?; }; exec 3>/dev/adc-in; try; head -c 48 /dev/zero >&3; try"});
    EXPECT_EQ(programOutput(result), "1\n0\n") << result;
    EXPECT_THAT(result.mErrors, HasSubstr("before any write triggered the fault r2h:9:EIO"));
    EXPECT_THAT(mRunner.readFile("e"), HasSubstr(R"("unmetFaults":["r2h:9:EIO"]})"));
    EXPECT_EQ(summary(result)["faulted writes"], "1");
}
