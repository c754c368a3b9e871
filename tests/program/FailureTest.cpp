#include <sys/mount.h>

#include <cstdio>
#include <stdexcept>

#include "FixedPaths.h"
#include "SandboxedTest.h"
#include "TestDevice.h"

namespace {
constexpr char kGoodLine[] = "a;b;0;0;50;1;2;3;4;5;6;7;8\n";
constexpr char kAborted[] = "Problem while handling line. abort.\n";
constexpr char kLoadFailed[] = "ERROR vx-simulator could not load data files.\n";
constexpr char kNotStarted[] = "FATAL Simulator Could not initialze Prus-Simulation\n";

std::string linesParsed(const std::string& logger, int lines)
{
    return "INFO " + logger + " Total " + std::to_string(lines) + " lines parsed.\n";
}

/** The log of a case configuration of that many lines, up to its first value file. */
std::string loaded(int lines, const std::string& valueFile)
{
    return linesParsed("Configuration", lines) +
           "INFO Simulator File 'vx-simulator.conf' loaded.\nINFO Simulator Parsing " + valueFile +
           "'.\n";
}

std::string doesNotOpen(const std::string& logger)
{
    return "FATAL " + logger +
           " openFileInternal() : Das I/O-Device '/usr' kann nicht geöffnet werden: file to open "
           "is a directory.\n";
}
} // namespace

/** What keeps the program from playing, on a driver of regular files. */
class FailureTest : public SandboxedTest
{
protected:
    FailureTest() { write("0,1,values.csv\n", kGoodLine); }

    void write(const std::string& configuration, const std::string& values) const
    {
        mRunner.writeFile("vx-simulator.conf", configuration);
        mRunner.writeFile("values.csv", values);
    }

    /** After `change` to the fixed paths; expects `middle` between the usual lines of the log. */
    void expectOrderlyEnd(
        const std::string& middle, const std::function<void()>& change = [] {},
        const Words& program = kSimulator) const
    {
        const CommandResult result = mRunner.run(program, [&change] {
            const TestDevice device;
            TestDevice::makeDriver();
            change();
        });
        EXPECT_EQ(result.mExitCode, 0) << result;
        EXPECT_EQ(result.mErrors, "");
        EXPECT_EQ(log(), std::string(kStartLine) + "INFO PrussSimulation start timeSECONDS\n" +
                             middle + "INFO vx-simulator done.\nINFO vx-simulator Terminating\n");
        std::remove(mRunner.path("simulator.log").c_str());
    }

    const std::string mLoaded = loaded(1, "values.csv") + linesParsed("CsvParser", 1) +
                                "INFO Simulator All data files parsed.\n";
};

/** What stood before the bad line is kept: a value file that does not exist. */
TEST_F(FailureTest, BadLines)
{
    write("# comment\n0,1,no.csv\nä\xff\n1,1,never.csv\n", "");
    expectOrderlyEnd(
        std::string("ERROR Configuration vx-simulator.conf:3: Wrong number of parameter. "
                    "Expected: 3, found 1: ä\xef\xbf\xbd\nERROR Configuration ") +
        kAborted + loaded(3, "no.csv") +
        "FATAL CsvParser openFileInternal() : Das I/O-Device 'no.csv' existiert nicht.\n"
        "ERROR Simulator could not open file: no.csv\n" +
        kLoadFailed);

    write("0,1,values.csv\n0,1,never.csv\n", ";;0;0;49,95;1;2;3;4;5;6;7;8\n");
    expectOrderlyEnd(loaded(2, "values.csv") +
                     "ERROR CsvParser values.csv:1: Parameter (49,95) is not of type float\n"
                     "ERROR CsvParser " +
                     kAborted + linesParsed("CsvParser", 1) + kLoadFailed);
}

/** Directories are there but do not open, not even for root. */
TEST_F(FailureTest, FilesThatDoNotOpen)
{
    write("0,1,/usr\n", "");
    expectOrderlyEnd(loaded(1, "/usr") + doesNotOpen("CsvParser") +
                     "ERROR Simulator could not open file: /usr\n" + kLoadFailed);
    expectOrderlyEnd(doesNotOpen("Configuration") +
                         "ERROR Simulator Could not open file '/usr'.\n"
                         "ERROR vx-simulator could not load config file: /usr\n",
                     [] {}, {VX_SIMULATOR, "--track", "track.xml", "--config", "/usr"});
}

TEST_F(FailureTest, FixedPathsThatDoNotOpen)
{
    for (const std::string& path : TestDevice::driverPaths()) {
        const std::string device =
            mLoaded + "FATAL PrussSimulation openFile : Das Device '" + path + "' ";
        expectOrderlyEnd(device + "existiert nicht.\n" + kNotStarted,
                         [&] { TestDevice::remove(path); });
        expectOrderlyEnd(device + "kann nicht geöffnet werden\n" + kNotStarted,
                         [&] { TestDevice::makeDirectory(path); });
    }
    expectOrderlyEnd("ERROR Configuration File:/etc/vx/simulator_control doesnot exist\n" +
                         mLoaded +
                         "FATAL PrussSimulation openFile : Das Device '/dev/adc-in' existiert "
                         "nicht.\n" +
                         kNotStarted,
                     [] {
                         TestDevice::remove(kSampleBufferPath);
                         if (mount("none", "/etc/vx", "tmpfs", MS_RDONLY, nullptr) != 0) {
                             throw std::runtime_error("cannot make /etc/vx read-only");
                         }
                     });
}
