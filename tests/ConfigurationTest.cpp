#include "Configuration.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <tuple>

#include "Files.h"
#include "LogCapture.h"
#include "TestDevice.h"

namespace {
class ConfigurationTest : public testing::Test
{
protected:
    bool parse(const std::string& text)
    {
        mConfiguration = std::make_unique<Configuration>();
        EXPECT_TRUE(mConfiguration->openFile(mFiles.make("conf", text)));
        return mConfiguration->parseCompleteFile();
    }

    /** "repetitions*file" of the current configuration's entries, "|" after each. */
    std::string entries()
    {
        std::string entries;
        mConfiguration->resetIterator();
        while (ConfigurationItem* item = mConfiguration->nextItem()) {
            entries +=
                std::to_string(item->repetitions()) + "*" + item->fileName().toStdString() + "|";
        }
        return entries;
    }

    TestDevice mDevice;
    LogCapture mLog;
    TestFiles mFiles;
    std::unique_ptr<Configuration> mConfiguration;
};

TEST_F(ConfigurationTest, ReadsEntriesInOrder)
{
    EXPECT_TRUE(
        parse("0,1,/data/idle.csv # idle\n1,5,/data/fault.csv\n0, 2 , b.csv\n"
              "1,1,/data/idle.csv\n +2 ,0,\n1,+4294967295,größe\n"));
    EXPECT_EQ(mLog.take(), Lines{"INFO Total 6 lines parsed."});
    EXPECT_EQ(mConfiguration->configurationCount(), 3);
    std::set<ConfigurationItem*> firsts;
    for (const auto& [number, expected] :
         {std::pair(0, "1*/data/idle.csv|2* b.csv|"),
          std::pair(1, "5*/data/fault.csv|1*/data/idle.csv|4294967295*größe|"), std::pair(2, "0*|"),
          std::pair(5, ""), std::pair(0, "1*/data/idle.csv|2* b.csv|")}) {
        mConfiguration->setCurrentConfiguration(number);
        EXPECT_EQ(entries(), expected);
        mConfiguration->resetIterator();
        firsts.insert(mConfiguration->nextItem());
    }
    EXPECT_EQ(firsts.size(), 4U) << "entries keep their address";
    EXPECT_EQ(mConfiguration->configurationCount(), 4) << "walking makes the empty list";
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
        EXPECT_FALSE(parse("0,1,first\n" + line + "\n0,1,never\n"));
        EXPECT_EQ(mLog.mEvents.at(0).mOrigin,
                  "Configuration source/Configuration.cpp Configuration::parseLine");
        EXPECT_EQ(mLog.take(), (Lines{"ERROR " + mFiles.path("conf") + ":2: " + message,
                                      "ERROR Problem while handling line. abort.",
                                      "INFO Total 2 lines parsed."}));
        EXPECT_EQ(entries(), "1*first|");
        EXPECT_EQ(mConfiguration->configurationCount(), 1);
    }
}

TEST_F(ConfigurationTest, NegativeNumberChoosesTheContinuousConfiguration)
{
    for (const auto& [text, played] :
         {std::pair("0,1,a\n1,1,b\n", "1*a|"), std::pair("0,1,a\n-7,1,\n1,1,b\n", "1*b|"),
          std::pair("0,1,a\n1,1,b\n-1,1,x\n-1,0,x\n", "1*a|"),
          std::pair("-1,4294967295,x\n0,1,a\n", "")}) {
        EXPECT_TRUE(parse(text));
        mConfiguration->selectNextConfiguration();
        EXPECT_EQ(entries(), played) << text;
        EXPECT_EQ(mConfiguration->configurationCount(), 2) << text;
    }
}
} // namespace
