#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "FixedPaths.h"
#include "PrivateMounts.h"
#include "SandboxedTest.h"

namespace {
constexpr char kGoodLine[] = "a;b;0;0;50;1;2;3;4;5;6;7;8\n";
constexpr char kFileLoaded[] = "INFO Simulator File 'vx-simulator.conf' loaded.\n";
constexpr char kAborted[] = "Problem while handling line. abort.\n";
constexpr char kLoadFailed[] = "ERROR vx-simulator could not load data files.\n";

std::string linesParsed(const std::string& logger, int lines)
{
    return "INFO " + logger + " Total " + std::to_string(lines) + " lines parsed.\n";
}
} // namespace

/** Everything that keeps the program from playing: the whole log, and an orderly end. */
class FailureTest : public SandboxedTest
{
protected:
    FailureTest() { write("0,1,values.csv\n", kGoodLine); }

    void write(const std::string& configuration, const std::string& values) const
    {
        mRunner.writeFile("vx-simulator.conf", configuration);
        mRunner.writeFile("values.csv", values);
    }

    /** Expects the log to be `middle` between its usual first and last lines, and empties it. */
    void expectOrderlyEnd(const CommandResult& result, const std::string& middle) const
    {
        EXPECT_EQ(result.mExitCode, 0) << result;
        EXPECT_EQ(result.mErrors, "");
        EXPECT_EQ(log(), std::string(kStartLine) + "INFO PrussSimulation start timeSECONDS\n" +
                             middle + "INFO vx-simulator done.\nINFO vx-simulator Terminating\n");
        std::remove(mRunner.path("simulator.log").c_str());
    }
};

struct BadLine
{
    const char* mLine;
    const char* mProblem;
};

/** The bad line is the third. What stood before it is kept: a value file that does not exist. */
TEST_F(FailureTest, BadLinesOfTheConfiguration)
{
    const BadLine cases[] = {
        {" 0,  1 # two", "Wrong number of parameter. Expected: 3, found 2: 0, 1"},
        {"1,2,a.csv,", "Wrong number of parameter. Expected: 3, found 4: 1,2,a.csv,"},
        {"ä\xff", "Wrong number of parameter. Expected: 3, found 1: ä\xef\xbf\xbd"},
        {"x,1,a.csv", "First parameter (x) is not of type quint32"},
        {"2147483648,1,a.csv", "First parameter (2147483648) is not of type quint32"},
        {"1,-2,a.csv", "Second parameter (-2) is not of type quint32"},
        {"1,4294967296,a.csv", "Second parameter (4294967296) is not of type quint32"},
        {"-1,1.5,x", "Second parameter (1.5) is not of type quint32"},
    };
    for (const BadLine& it : cases) {
        SCOPED_TRACE(it.mLine);
        write(std::string("# comment\n0,1,no.csv\n") + it.mLine + "\n1,1,never.csv\n", "");
        expectOrderlyEnd(
            sandbox({}, kSimulator),
            std::string("ERROR Configuration vx-simulator.conf:3: ") + it.mProblem +
                "\nERROR Configuration " + kAborted + linesParsed("Configuration", 3) +
                kFileLoaded + "INFO Simulator Parsing no.csv'.\n" +
                "FATAL CsvParser openFileInternal() : Das I/O-Device 'no.csv' existiert nicht.\n" +
                "ERROR Simulator could not open file: no.csv\n" + kLoadFailed);
    }
}

TEST_F(FailureTest, BadLinesOfAValueFile)
{
    const BadLine cases[] = {
        {"a;b;0;0;50;1;2;3;4;5;6;7",
         "Wrong number of parameter. Expected: 13, found 12: a;b;0;0;50;1;2;3;4;5;6;7"},
        {";;0;0;50;1;2;3;4;5;6;7;8;",
         "Wrong number of parameter. Expected: 13, found 14: ;;0;0;50;1;2;3;4;5;6;7;8;"},
        {";;0x10;0;50;1;2;3;4;5;6;7;8", "Parameter (0x10) is not of type quint32"},
        {";;4294967296;x;50;1;2;3;4;5;6;7;8", "Parameter (4294967296) is not of type quint32"},
        {";;0;-1;50;1;2;3;4;5;6;7;8", "Parameter (-1) is not of type quint32"},
        {";;0;;50;1;2;3;4;5;6;7;8", "Parameter () is not of type quint32"},
        {";;0;0;49,95;1;2;3;4;5;6;7;8", "Parameter (49,95) is not of type float"},
        {";;0;0;50;1.5;2;3;4;5;6;7;8", "Parameter (1.5) is not of type qint32"},
        {";;0;0;50;1;2;3;4;5;6;7;2147483648", "Parameter (2147483648) is not of type qint32"},
    };
    for (const BadLine& it : cases) {
        SCOPED_TRACE(it.mLine);
        write("0,1,values.csv\n0,1,never.csv\n1,1,never.csv\n",
              std::string("# comment\n") + kGoodLine + it.mLine + "\n" + kGoodLine);
        expectOrderlyEnd(sandbox({}, kSimulator),
                         linesParsed("Configuration", 3) + kFileLoaded +
                             "INFO Simulator Parsing values.csv'.\n" +
                             "ERROR CsvParser values.csv:3: " + it.mProblem + "\nERROR CsvParser " +
                             kAborted + linesParsed("CsvParser", 3) + kLoadFailed);
    }
}

TEST_F(FailureTest, GapInTheNumbers)
{
    write("0,1,values.csv\n2,1,values.csv\n", kGoodLine);
    expectOrderlyEnd(sandbox({}, kSimulator),
                     linesParsed("Configuration", 2) + kFileLoaded +
                         "INFO Simulator Parsing values.csv'.\n" + linesParsed("CsvParser", 1) +
                         "ERROR Simulator no configuration found.\n" + kLoadFailed);
}

/** Directories are there but do not open, not even for root. */
TEST_F(FailureTest, FilesThatDoNotOpen)
{
    const std::string text =
        " openFileInternal() : Das I/O-Device '/usr' kann nicht geöffnet werden: "
        "file to open is a directory.\n";
    write("0,1,/usr\n", "");
    expectOrderlyEnd(sandbox({}, kSimulator),
                     linesParsed("Configuration", 1) + kFileLoaded +
                         "INFO Simulator Parsing /usr'.\nFATAL CsvParser" + text +
                         "ERROR Simulator could not open file: /usr\n" + kLoadFailed);
    expectOrderlyEnd(sandbox({}, {VX_SIMULATOR, "--track", "track.xml", "--config", "/usr"}),
                     "FATAL Configuration" + text +
                         "ERROR Simulator Could not open file '/usr'.\n"
                         "ERROR vx-simulator could not load config file: /usr\n");
}

/** No command can be taken then, but the program plays. */
TEST_F(FailureTest, DirectoryInTheFifosPlace)
{
    const CommandResult result =
        sandbox({"--for", "0.1"}, after("mkdir /etc/vx/simulator_control", kSimulator));
    EXPECT_EQ(result.mExitCode, 0) << result;
    EXPECT_NE(summary(result)["blocks"], "0") << result;
    EXPECT_EQ(split(log(), '\n').back(), "INFO Simulator Starting endless simulation loop");
}

/** The fixed paths without the sandbox's driver, in mounts that the test makes itself. */
class NoDriverTest : public FailureTest
{
protected:
    /** Runs the simulator where only these files of the driver exist. */
    CommandResult runWith(const Words& files, const std::function<void()>& furtherChange,
                          const Words& program = kSimulator) const
    {
        return mRunner.run(program, [&] {
            PrivateMounts mounts;
            mounts.enter();
            mounts.makePrivateDev();
            mounts.makeEtcVx();
            mounts.makeDriverDirectory();
            for (const std::string& file : files) {
                std::ofstream(file).flush();
            }
            furtherChange();
        });
    }

    static void check(int result)
    {
        if (result != 0) {
            throw std::runtime_error("a fixed path cannot be made");
        }
    }

    const std::string mLoaded =
        linesParsed("Configuration", 1) + kFileLoaded + "INFO Simulator Parsing values.csv'.\n" +
        linesParsed("CsvParser", 1) + "INFO Simulator All data files parsed.\n";
    const std::string mNotStarted = "FATAL Simulator Could not initialze Prus-Simulation\n";
};

TEST_F(NoDriverTest, EachFileIsNeeded)
{
    const Words all = {kSampleBufferPath, kH2pPath, kF2hPath, kD2hPath, kR2hPath};
    for (std::size_t present = 0; present < all.size(); ++present) {
        const Words files(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(present));
        const std::string device =
            mLoaded + "FATAL PrussSimulation openFile : Das Device '" + all[present] + "' ";
        expectOrderlyEnd(runWith(files, [] {}), device + "existiert nicht.\n" + mNotStarted);
        expectOrderlyEnd(runWith(files, [&] { check(mkdir(all[present].c_str(), 0755)); }),
                         device + "kann nicht geöffnet werden\n" + mNotStarted);
    }
}

TEST_F(NoDriverTest, FifoThatCannotBeMade)
{
    const CommandResult result =
        runWith({}, [] { check(mount("none", "/etc/vx", "tmpfs", MS_RDONLY, nullptr)); });
    expectOrderlyEnd(
        result, "ERROR Configuration File:/etc/vx/simulator_control doesnot exist\n" + mLoaded +
                    "FATAL PrussSimulation openFile : Das Device '/dev/adc-in' existiert "
                    "nicht.\n" +
                    mNotStarted);
}

/** A driver that takes nothing costs neither the processor nor the log. */
TEST_F(NoDriverTest, FullSampleBufferIsTriedOnceASecond)
{
    const CommandResult result = runWith(
        {kH2pPath, kF2hPath, kD2hPath, kR2hPath},
        [] { check(symlink("/dev/full", kSampleBufferPath)); },
        joined({"timeout", "1.5"}, kSimulator));
    EXPECT_EQ(result.mExitCode, 124) << result;
    EXPECT_LT(result.mCpuSeconds, kIdleShare * result.mSeconds) << result;
    const std::string pass =
        "ERROR PrussSimulation error writing file /dev/adc-in\n"
        "ERROR Simulator Error while writing data to sample buffer.\n";
    const std::string text = log();
    EXPECT_EQ(text.substr(std::min(text.find("ERROR"), text.size())), pass + pass);
}
