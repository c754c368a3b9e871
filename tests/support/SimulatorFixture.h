#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <memory>

#include "Files.h"
#include "FixedPaths.h"
#include "LogCapture.h"
#include "Records.h"
#include "Simulator.h"
#include "TestDevice.h"
#include "VirtualSystem.h"

/** Thrown out of a system call in order to leave the endless loop. */
struct EndOfTest
{
};

/** A simulator on a driver of regular files, in virtual time, in a directory of its own. */
class SimulatorFixture : public testing::Test
{
protected:
    SimulatorFixture()
    {
        std::filesystem::current_path(mFiles.path(""));
        restart();
    }
    ~SimulatorFixture() override { std::filesystem::current_path("/"); }

    /** A new simulator on a driver that has taken nothing. */
    void restart()
    {
        TestDevice::makeDriver();
        mSimulator = std::make_unique<Simulator>();
        mLog.take();
    }

    bool loadConfig(const std::string& text)
    {
        writeFile("conf", text);
        return mSimulator->loadConfigFile(QStringLiteral("conf"));
    }

    /** Loads the configuration and plays it until a system call throws. */
    void runUntilEndOfTest(const std::string& config)
    {
        ASSERT_TRUE(loadConfig(config) && mSimulator->loadDataFiles());
        mLog.take();
        EXPECT_THROW(mSimulator->startEndless(), EndOfTest);
        EXPECT_FALSE(holdsOpen(mFiles.path("conf")));
    }

    TestDevice mDevice;
    TestFiles mFiles;
    LogCapture mLog;
    VirtualSystem mSystem;
    std::unique_ptr<Simulator> mSimulator;
};
