#include "Configuration.h"

#include <gtest/gtest.h>

#include "Files.h"
#include "LogCapture.h"
#include "TestDevice.h"

namespace {
class ConfigurationTest : public testing::Test
{
protected:
    bool parse(Configuration& configuration, const std::string& text)
    {
        EXPECT_TRUE(configuration.openFile(mFiles.make("conf", text)));
        return configuration.parseCompleteFile();
    }

    /** "repetitions*file" of the entries from the read position on. */
    static Lines remainingEntries(Configuration& configuration)
    {
        Lines entries;
        while (ConfigurationItem* item = configuration.nextItem()) {
            entries.push_back(std::to_string(item->repetitions()) + "*" +
                              item->fileName().toStdString());
        }
        return entries;
    }

    static Lines entries(Configuration& configuration, qint32 number)
    {
        configuration.setCurrentConfiguration(number);
        configuration.resetIterator();
        return remainingEntries(configuration);
    }

    TestDevice mDevice;
    LogCapture mLog;
    TestFiles mFiles;
    Configuration mConfiguration;
};

TEST_F(ConfigurationTest, ReadsEntriesInOrder)
{
    EXPECT_TRUE(parse(mConfiguration,
                      "0,1,/data/idle.csv # idle\n"
                      "1,5,/data/fault.csv\n"
                      "0, 2 , b.csv\n"
                      "1,1,/data/idle.csv\n"
                      " +2 ,0,\n"
                      "1,+4294967295,größe\n"));
    EXPECT_EQ(mConfiguration.configurationCount(), 3);
    EXPECT_EQ(entries(mConfiguration, 0), (Lines{"1*/data/idle.csv", "2* b.csv"}));
    EXPECT_EQ(entries(mConfiguration, 1),
              (Lines{"5*/data/fault.csv", "1*/data/idle.csv", "4294967295*größe"}));
    EXPECT_EQ(entries(mConfiguration, 2), Lines{"0*"});
    EXPECT_EQ(mConfiguration.nextItem(), nullptr);
    EXPECT_EQ(mLog.takeLines(), Lines{"INFO Total 6 lines parsed."});
}

TEST_F(ConfigurationTest, RejectsLinesWithTheirMessage)
{
    const std::string wrongNumber = "Wrong number of parameter. Expected: 3, found ";
    const std::string notUnsigned = ") is not of type quint32";
    const struct
    {
        std::string line;
        std::string message;
    } kCases[] = {
        {"0,1", wrongNumber + "2: 0,1"},
        {"nonsense", wrongNumber + "1: nonsense"},
        {"1,2,a.csv,", wrongNumber + "4: 1,2,a.csv,"},
        {"x,1,a.csv", "First parameter (x" + notUnsigned},
        {",1,a.csv", "First parameter (" + notUnsigned},
        {"0x1,1,a.csv", "First parameter (0x1" + notUnsigned},
        {"1.0,1,a.csv", "First parameter (1.0" + notUnsigned},
        {"2147483648,1,a.csv", "First parameter (2147483648" + notUnsigned},
        {"y,x,a.csv", "First parameter (y" + notUnsigned},
        {"1,-2,a.csv", "Second parameter (-2" + notUnsigned},
        {"1, ,a.csv", "Second parameter ( " + notUnsigned},
        {"1,4294967296,a.csv", "Second parameter (4294967296" + notUnsigned},
        {"-1,x,", "Second parameter (x" + notUnsigned},
        {"-1,-1,", "Second parameter (-1" + notUnsigned},
    };
    for (const auto& row : kCases) {
        Configuration configuration;
        EXPECT_FALSE(parse(configuration, "0,1,first\n" + row.line + "\n0,1,never\n"));
        EXPECT_EQ(mLog.mEvents.at(0).mLogger, "Configuration");
        EXPECT_EQ(mLog.mEvents.at(0).mMethod, "Configuration::parseLine");
        EXPECT_EQ(mLog.takeLines(), (Lines{"ERROR " + mFiles.path("conf") + ":2: " + row.message,
                                           "ERROR Problem while handling line. abort.",
                                           "INFO Total 2 lines parsed."}));
        EXPECT_EQ(configuration.configurationCount(), 1);
        EXPECT_EQ(entries(configuration, 0), Lines{"1*first"});
    }
}

TEST_F(ConfigurationTest, NegativeNumberChoosesTheContinuousConfiguration)
{
    const struct
    {
        const char* text;
        Lines played;
        int count; ///< with the empty list that selecting a number without entries makes
    } kCases[] = {
        {"", {}, 1},
        {"0,1,a\n1,1,b\n", {"1*a"}, 2},
        {"0,1,a\n-7,1,\n1,1,b\n", {"1*b"}, 2},
        {"0,1,a\n1,1,b\n-1,1,x\n-1,0,x\n", {"1*a"}, 2},
        {"-2147483648,3,\n0,1,a\n", {}, 2},
        {"-1,4294967295,x\n0,1,a\n", {}, 2},
    };
    for (const auto& row : kCases) {
        Configuration configuration;
        EXPECT_TRUE(parse(configuration, row.text));
        for (int pass = 0; pass < 2; ++pass) {
            configuration.selectNextConfiguration();
            configuration.resetIterator();
            EXPECT_EQ(remainingEntries(configuration), row.played) << row.text;
        }
        EXPECT_EQ(configuration.configurationCount(), row.count) << row.text;
    }
}

TEST_F(ConfigurationTest, WalkingANumberWithoutEntriesMakesItsList)
{
    parse(mConfiguration, "0,1,a\n1,1,b\n");
    mConfiguration.setCurrentConfiguration(5);
    EXPECT_EQ(mConfiguration.configurationCount(), 2);
    mConfiguration.resetIterator();
    EXPECT_EQ(mConfiguration.configurationCount(), 3);
    EXPECT_EQ(mConfiguration.nextItem(), nullptr);
}

TEST_F(ConfigurationTest, EntriesKeepTheirAddressAndValues)
{
    parse(mConfiguration, "0,1,a\n0,2,b\n1,3,c\n");
    mConfiguration.resetIterator();
    ConfigurationItem* const first = mConfiguration.nextItem();
    const QString name = mFiles.make("values", valueLine("1", "50"));
    ASSERT_TRUE(first->inputValues().openFile(name));
    ASSERT_TRUE(first->inputValues().parseCompleteFile());
    entries(mConfiguration, 1);
    entries(mConfiguration, 7);
    mConfiguration.setCurrentConfiguration(0);
    mConfiguration.resetIterator();
    ASSERT_EQ(mConfiguration.nextItem(), first);
    first->inputValues().resetIterator();
    EXPECT_NE(first->inputValues().nextItem(), nullptr);
    mConfiguration.nextItem()->inputValues().resetIterator();
}
} // namespace
