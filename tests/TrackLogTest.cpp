#include "TrackLog.h"

#include <gtest/gtest.h>

#include <utility>

#include "Files.h"
#include "LogCapture.h"
#include "TrackSystem.h"

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

TEST(TrackSystemTest, ConfiguresLogging)
{
    const TestFiles files;
    const std::string output = files.path("log");
    const QString config = files.make("config.xml",
                                      "<?xml version='1.0'?>"
                                      "<log4j:configuration xmlns:log4j='x'>"
                                      "<appender name='a' class='org.apache.log4j.FileAppender'>"
                                      "<param name='file' value='" +
                                          output +
                                          "'/><layout class='org.apache.log4j.PatternLayout'>"
                                          "<param name='ConversionPattern' value='%c %p %m%n'/>"
                                          "</layout></appender>"
                                          "<root><level value='info'/><appender-ref ref='a'/>"
                                          "</root></log4j:configuration>");
    testing::internal::CaptureStderr();
    const log4cxx::LoggerPtr logger = initializeTrackSystem(config.toStdString());
    logInfo(logger, LOG4CXX_LOCATION, [] { return "für alle"; });
    logAt(log4cxx::Level::getDebug(), logger, LOG4CXX_LOCATION, [] { return "nobody"; });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(readFile(output), "vx-simulator INFO für alle\n");
}

struct BadConfig
{
    const char* name;
    const char* text; ///< null: no file
};

void PrintTo(const BadConfig& config, std::ostream* out)
{
    *out << config.name;
}

/** Each in a process of its own, as the log configuration is. */
class BadTrackConfigTest : public testing::TestWithParam<BadConfig>
{
};

TEST_P(BadTrackConfigTest, IsReportedAndLogsToTheConsole)
{
    const TestFiles files;
    const std::string path = files.path("größe.xml");
    if (GetParam().text != nullptr) {
        writeFile(path, GetParam().text);
    }
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const log4cxx::LoggerPtr logger = initializeTrackSystem(path);
    logInfo(logger, LOG4CXX_LOCATION, [] { return "after all"; });
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("Logging configuration '" + path + "' cannot be read"), std::string::npos)
        << err;
    EXPECT_NE(out.find("after all"), std::string::npos) << out;
}

INSTANTIATE_TEST_SUITE_P(
    , BadTrackConfigTest,
    testing::Values(BadConfig{"Missing", nullptr}, BadConfig{"Empty", ""},
                    BadConfig{"NoXml", "not XML at all"},
                    BadConfig{"OtherXml", "<html><body/></html>"},
                    BadConfig{"Unclosed", "<unclosed"},
                    BadConfig{"NoAppender",
                              "<?xml version='1.0'?><log4j:configuration xmlns:log4j='x'>"
                              "<root><level value='info'/></root></log4j:configuration>"}),
    testing::PrintToStringParamName());
} // namespace
