#include "TrackLog.h"

#include <gtest/gtest.h>

#include <utility>

#include "LogCapture.h"

namespace {
TEST(TrackLogTest, BuildsNoTextWhenTheLevelIsOffButCounts)
{
    LogCapture log;
    const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("some name");
    int built = 0;
    const auto text = [&built] {
        ++built;
        return "text";
    };
    logger->setLevel(log4cxx::Level::getOff());
    logInfo(logger, LOG4CXX_LOCATION, text);
    logError(logger, LOG4CXX_LOCATION, text);
    logFatal(logger, LOG4CXX_LOCATION, text);
    EXPECT_EQ(built, 0);
    EXPECT_TRUE(log.mEvents.empty());
    EXPECT_EQ(std::exchange(TrackObject::sErrorCounter, 0), 1);
    EXPECT_EQ(std::exchange(TrackObject::sFatalCounter, 0), 1);

    logger->setLevel(log4cxx::Level::getError());
    logInfo(logger, LOG4CXX_LOCATION, text);
    logError(logger, LOG4CXX_LOCATION, text);
    logFatal(logger, LOG4CXX_LOCATION, text);
    EXPECT_EQ(built, 2);
    EXPECT_EQ(log.mEvents.at(0).mOrigin.substr(0, 9), "some name");
    EXPECT_EQ(log.take(), (Lines{"ERROR text", "FATAL text"}));
}

/** With the level of the line that is written, not of those that were lost, and once. */
TEST(TrackLogTest, LinesThatCannotBeWrittenAreLostAndCounted)
{
    LogCapture log;
    const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("full disk");
    const auto text = [] { return "text"; };
    log.mFull = true;
    logInfo(logger, LOG4CXX_LOCATION, text);
    logInfo(logger, LOG4CXX_LOCATION, text);
    log.mFull = false;
    logAt(log4cxx::Level::getWarn(), logger, LOG4CXX_LOCATION, text);
    logInfo(logger, LOG4CXX_LOCATION, text);
    EXPECT_EQ(log.take(),
              (Lines{"WARN Log lines lost before this one: 2", "WARN text", "INFO text"}));
    EXPECT_THROW(logInfo(logger, LOG4CXX_LOCATION, []() -> std::string { throw std::bad_alloc(); }),
                 std::bad_alloc);
}
} // namespace
