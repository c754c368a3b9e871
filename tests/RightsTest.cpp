#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Configuration.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "PmeSimulation.h"
#include "TestDevice.h"

namespace {
constexpr char kNowhere[] = "/etc/vx/nowhere";

class RightsTest : public testing::Test
{
protected:
    /** What is logged about a control FIFO that was there before the program. */
    Lines startOnFifo(mode_t mode, uid_t owner)
    {
        TestDevice::remove(kControlFifoPath);
        EXPECT_EQ(mkfifo(kControlFifoPath, mode), 0);
        EXPECT_EQ(chmod(kControlFifoPath, mode), 0);
        EXPECT_EQ(chown(kControlFifoPath, owner, getegid()), 0);
        mLog.take();
        const Configuration configuration;
        for (const LogEvent& event : mLog.mEvents) {
            EXPECT_EQ(event.mOrigin,
                      "Configuration source/Configuration.cpp Configuration::Configuration");
        }
        return mLog.take();
    }

    TestDevice mDevice;
    LogCapture mLog;
};

TEST_F(RightsTest, FifoThatOthersCanUseIsUsedAndTold)
{
    const std::string prefix = "INFO /etc/vx/simulator_control was there, with mode ";
    const std::string suffix = " as its owner: others can send commands";
    const std::string user = std::to_string(geteuid());
    EXPECT_EQ(startOnFifo(0600, geteuid()), Lines{});
    EXPECT_EQ(startOnFifo(0711, geteuid()), Lines{});
    EXPECT_EQ(startOnFifo(0620, geteuid()), Lines{prefix + "0620 and user " + user + suffix});
    EXPECT_EQ(startOnFifo(0604, geteuid()), Lines{prefix + "0604 and user " + user + suffix});
    if (geteuid() == 0) { // an ordinary user cannot give a file away
        EXPECT_EQ(startOnFifo(0600, 1), Lines{prefix + "0600 and user 1" + suffix});
    }
}

TEST_F(RightsTest, NoFileIsMadeThroughALinkToNowhere)
{
    TestDevice::makeLink(kControlFifoPath, kNowhere);
    const Configuration configuration;
    EXPECT_EQ(mLog.take(), Lines{"ERROR File:/etc/vx/simulator_control doesnot exist"});
    EXPECT_FALSE(std::filesystem::exists(kNowhere));
    TestDevice::makeLink(kPmeDevicePath, kNowhere);
    const PmeSimulation pme;
    EXPECT_EQ(mLog.take(), Lines{"INFO Pme-Device:/dev/pme-sim not found, no Pme-Simulation"});
    EXPECT_FALSE(std::filesystem::exists(kNowhere));
}
} // namespace
