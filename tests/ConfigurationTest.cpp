#include "Configuration.h"

#include <gtest/gtest.h>

#include <tuple>

#include "Files.h"
#include "LogCapture.h"
#include "TestDevice.h"

namespace {
bool parse(Configuration& configuration, const TestFiles& files, const std::string& text)
{
    EXPECT_TRUE(configuration.openFile(files.make("conf", text)));
    return configuration.parseCompleteFile();
}

/** "repetitions*file" of the current configuration's entries. */
Lines entries(Configuration& configuration)
{
    Lines entries;
    configuration.resetIterator();
    while (ConfigurationItem* item = configuration.nextItem()) {
        entries.push_back(std::to_string(item->repetitions()) + "*" +
                          item->fileName().toStdString());
    }
    return entries;
}

Lines entries(Configuration& configuration, qint32 number)
{
    configuration.setCurrentConfiguration(number);
    return entries(configuration);
}

class ConfigurationTest : public testing::Test
{
protected:
    TestDevice mDevice;
    LogCapture mLog;
    TestFiles mFiles;
    Configuration mConfiguration;
};

TEST_F(ConfigurationTest, ReadsEntriesInOrder)
{
    EXPECT_TRUE(parse(mConfiguration, mFiles,
                      "0,1,/data/idle.csv # idle\n1,5,/data/fault.csv\n0, 2 , b.csv\n"
                      "1,1,/data/idle.csv\n +2 ,0,\n1,+4294967295,größe\n"));
    EXPECT_EQ(mLog.take(), Lines{"INFO Total 6 lines parsed."});
    EXPECT_EQ(entries(mConfiguration, 0), (Lines{"1*/data/idle.csv", "2* b.csv"}));
    EXPECT_EQ(entries(mConfiguration, 1),
              (Lines{"5*/data/fault.csv", "1*/data/idle.csv", "4294967295*größe"}));
    EXPECT_EQ(entries(mConfiguration, 2), Lines{"0*"});
    EXPECT_EQ(mConfiguration.nextItem(), nullptr);

    mConfiguration.setCurrentConfiguration(0);
    mConfiguration.resetIterator();
    ConfigurationItem* const first = mConfiguration.nextItem();
    EXPECT_EQ(mConfiguration.configurationCount(), 3);
    EXPECT_EQ(entries(mConfiguration, 5), Lines{});
    EXPECT_EQ(mConfiguration.configurationCount(), 4) << "walking makes the empty list";
    EXPECT_EQ(entries(mConfiguration, 0).size(), 2U);
    mConfiguration.resetIterator();
    EXPECT_EQ(mConfiguration.nextItem(), first) << "entries keep their address";
}

TEST_F(ConfigurationTest, RejectsLinesWithTheirMessage)
{
    const std::string kWrongNumber = "Wrong number of parameter. Expected: 3, found ";
    const std::string kNotUnsigned = ") is not of type quint32";
    const std::tuple<std::string, std::string> kCases[] = {
        {"0,1", kWrongNumber + "2: 0,1"},
        {"1,2,a.csv,", kWrongNumber + "4: 1,2,a.csv,"},
        {"x,1,a.csv", "First parameter (x" + kNotUnsigned},
        {"2147483648,1,a.csv", "First parameter (2147483648" + kNotUnsigned},
        {"1,-2,a.csv", "Second parameter (-2" + kNotUnsigned},
        {"1,4294967296,a.csv", "Second parameter (4294967296" + kNotUnsigned},
        {"-1,-1,", "Second parameter (-1" + kNotUnsigned}};
    for (const auto& [line, message] : kCases) {
        Configuration configuration;
        EXPECT_FALSE(parse(configuration, mFiles, "0,1,first\n" + line + "\n0,1,never\n"));
        EXPECT_EQ(mLog.mEvents.at(0).mOrigin,
                  "Configuration source/Configuration.cpp Configuration::parseLine");
        EXPECT_EQ(mLog.take(), (Lines{"ERROR " + mFiles.path("conf") + ":2: " + message,
                                      "ERROR Problem while handling line. abort.",
                                      "INFO Total 2 lines parsed."}));
        EXPECT_EQ(configuration.configurationCount(), 1);
        EXPECT_EQ(entries(configuration), Lines{"1*first"});
    }
}

TEST_F(ConfigurationTest, NegativeNumberChoosesTheContinuousConfiguration)
{
    // The count is with the empty list that walking a number without entries makes.
    const std::tuple<const char*, Lines, int> kCases[] = {
        {"", {}, 1},
        {"0,1,a\n1,1,b\n", {"1*a"}, 2},
        {"0,1,a\n-7,1,\n1,1,b\n", {"1*b"}, 2},
        {"0,1,a\n1,1,b\n-1,1,x\n-1,0,x\n", {"1*a"}, 2},
        {"-1,4294967295,x\n0,1,a\n", {}, 2}};
    for (const auto& [text, played, count] : kCases) {
        Configuration configuration;
        EXPECT_TRUE(parse(configuration, mFiles, text));
        for (int pass = 0; pass < 2; ++pass) {
            configuration.selectNextConfiguration();
            EXPECT_EQ(entries(configuration), played) << text;
        }
        EXPECT_EQ(configuration.configurationCount(), count) << text;
    }
}
} // namespace
