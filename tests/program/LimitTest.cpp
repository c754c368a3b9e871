#include <algorithm>
#include <filesystem>

#include "SandboxedTest.h"

#if defined(__SANITIZE_ADDRESS__)
#define VX_HAS_ADDRESS_SANITIZER
#endif

/** Files that are too large for the program or for the log. */
class LimitTest : public SandboxedTest
{
protected:
    LimitTest() { mRunner.writeFile("vx-simulator.conf", "0,1,values.csv\n"); }
};

TEST_F(LimitTest, LackOfMemoryIsToldAndEndsItInOrder)
{
#ifdef VX_HAS_ADDRESS_SANITIZER
    GTEST_SKIP() << "it takes more address space than any limit allows";
#endif
    mRunner.writeFile("values.csv", "");
    std::filesystem::resize_file(mRunner.path("values.csv"), 400'000'000); // one line of NULs
    const CommandResult result = sandbox({}, after("ulimit -v 300000", kSimulator));
    EXPECT_EQ(result.mExitCode, 0) << result;
    EXPECT_EQ(result.mErrors, "");
    const std::string text = log();
    EXPECT_EQ(text.substr(std::min(text.size(), text.find("Parsing"))),
              "Parsing values.csv'.\nFATAL vx-simulator out of memory.\n"
              "INFO vx-simulator done.\nINFO vx-simulator Terminating\n");
}

TEST_F(LimitTest, LongTextIsQuotedByItsBeginning)
{
    const std::string quoted(1000, 'x');
    const std::string rest(100'000, 'x');
    mRunner.writeFile("values.csv", quoted + rest + "\n");
    sandbox({}, kSimulator);
    EXPECT_NE(log().find("found 1: " + quoted + "...\n"), std::string::npos) << log();
}
