#include "CsvParser.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <random>
#include <tuple>

#include "Files.h"
#include "LogCapture.h"
#include "VirtualSystem.h"

namespace {
using namespace std::string_literals;
using Numbers = std::vector<quint32>;

/** Collects the data parts and rejects those that begin with "bad". */
class CollectingParser : public CsvParser
{
public:
    bool parseLine(QString line) override
    {
        mLines.push_back(line.toStdString());
        mNumbers.push_back(mLineNumber);
        return !line.startsWith(QLatin1String("bad"));
    }

    quint32 lineNumber() const { return mLineNumber; }

    Lines mLines;
    Numbers mNumbers;
};

Lines total(int lines)
{
    return {"INFO Total " + std::to_string(lines) + " lines parsed."};
}

class CsvParserTest : public testing::Test
{
protected:
    bool open(const std::string& bytes) { return mParser.openFile(mFiles.make("file", bytes)); }

    LogCapture mLog;
    TestFiles mFiles;
    CollectingParser mParser;
};

TEST_F(CsvParserTest, ReadsAsAFileInTextModeDoes)
{
    const std::string kPieces[] = {"\n",   "\r",   "a",   "1",        " ",
                                   "\t",   "#",    ",",   ";",        "\xC3",
                                   "\xA4", "\xFF", "\0"s, "\xC2\xA0", "\xEF\xBB\xBF"};
    const auto seed = std::random_device()();
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        std::string bytes;
        for (auto left = random() % 60; left > 0; --left) {
            bytes += kPieces[random() % std::size(kPieces)];
        }
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + testing::PrintToString(bytes));
        QFile file(mFiles.make("file", bytes));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text | QIODevice::Unbuffered));
        Lines expected;
        int count = 0;
        for (; !file.atEnd(); ++count) {
            const QString text = QString::fromUtf8(file.readLine());
            const QString data = text.split(QLatin1Char('#')).first().simplified();
            if (!data.isEmpty()) {
                expected.push_back(data.toStdString());
            }
        }
        CollectingParser parser;
        ASSERT_TRUE(parser.openFile(file.fileName()));
        ASSERT_TRUE(parser.parseCompleteFile());
        ASSERT_EQ(parser.mLines, expected);
        ASSERT_EQ(mLog.take(), total(count));
    }
}

TEST_F(CsvParserTest, LinesMayCrossAndExceedTheBlocksThatAreRead)
{
    for (const size_t size : {1, 100'000, 262'142, 262'143, 262'144, 262'145, 524'288, 900'001}) {
        const std::string line(size, 'x');
        for (const char* end : {"", "\n"}) {
            CollectingParser parser;
            ASSERT_TRUE(parser.openFile(mFiles.make("file", line + "\nnext\n" + line + end)));
            EXPECT_TRUE(parser.parseCompleteFile());
            EXPECT_EQ(parser.mLines, (Lines{line, "next", line})) << size;
        }
    }
}

TEST_F(CsvParserTest, GoesFromNoFileToOpenToClosedAndBack)
{
    mParser.closeFile();
    EXPECT_TRUE(mParser.canReadLine());
    EXPECT_FALSE(mParser.parseCompleteFile());
    ASSERT_TRUE(open("1\n"));
    EXPECT_FALSE(mParser.canReadLine());
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_FALSE(holdsOpen(mFiles.path("file")));
    EXPECT_EQ(mParser.parseLines(1), -1);
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.take(), (Lines{"ERROR config file not found", total(1)[0], total(0)[0]}));
    ASSERT_TRUE(open("2\n"));
    EXPECT_EQ(mParser.parseLines(1), 1);
    EXPECT_EQ(mParser.mLines, (Lines{"1", "2"}));
    EXPECT_FALSE(mParser.openFile(QStringLiteral("/größe")));
    EXPECT_EQ(mParser.lineNumber(), 0U);
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mParser.parseLines(1), -1);
    EXPECT_EQ(mLog.mEvents.at(0).mOrigin,
              "CsvParser source/CsvParser.cpp CsvParser::openFileInternal");
    EXPECT_EQ(mLog.take(),
              (Lines{"FATAL openFileInternal() : Das I/O-Device '/größe' existiert nicht.",
                     "ERROR config file not found"}));
}

TEST_F(CsvParserTest, WhatHasNoBeginningIsNotReadAndTold)
{
    ASSERT_TRUE(mParser.openFile(QStringLiteral("/dev/null")));
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.take(), (Lines{"INFO /dev/null is not read: it has no beginning to go back to, "
                                  "as a pipe or a device",
                                  total(0)[0]}));
}

TEST_F(CsvParserTest, ParsesPiecewise)
{
    ASSERT_TRUE(open("1\n\nbad\n4\n5\n6"));
    EXPECT_EQ(mParser.parseLines(0), 0);
    EXPECT_EQ(mParser.lineNumber(), 0U);
    EXPECT_EQ(mParser.parseLines(3), 2) << "the blank line counts, the rejected one does not";
    EXPECT_EQ(mParser.parseLines(1), 1);
    EXPECT_EQ(mParser.parseLines(-1), 2);
    EXPECT_EQ(mParser.parseLines(3), -2);
    for (const char* grown : {"6", "\n7", "\n\n"}) {
        std::ofstream(mFiles.path("file"), std::ios::app) << grown;
        EXPECT_TRUE(mParser.parseNextLine());
        EXPECT_TRUE(mParser.parseNextLine());
    }
    std::ofstream(mFiles.path("file"), std::ios::app) << "13\n14";
    EXPECT_EQ(mParser.parseLines(-1), 2) << "read on";
    EXPECT_EQ(mParser.mNumbers, (Numbers{1, 3, 4, 5, 6, 7, 10, 13, 14}));
    EXPECT_EQ(mLog.take(), Lines{});
    EXPECT_FALSE(mParser.parseCompleteFile()) << "begins again";
    EXPECT_EQ(mParser.lineNumber(), 3U);

    ASSERT_TRUE(open("1\n"));
    std::filesystem::remove(mFiles.path("file"));
    EXPECT_EQ(mParser.parseLines(1), -1);
}

TEST_F(CsvParserTest, WhatTheSecondReadBringsDecidesAboutTheRest)
{
    const std::string kMessage =
        "ERROR " + mFiles.path("file") + ":37450: Reading failed: Input/output error";
    const std::tuple<int, bool, Lines> kCases[] = {
        {EIO, false, {kMessage, total(37'449)[0]}},
        {VirtualSystem::kNothing, true, total(37'450)}, // shorter than its size says
        {EINTR, true, total(40'000)}};
    VirtualSystem system;
    const auto openFaulty = [&](int fault) {
        ASSERT_TRUE(open(repeated("123456\n", 40'000)));
        system.mReadsUntilFault = 1;
        system.mReadFault = fault;
    };
    for (const auto& [fault, ok, messages] : kCases) {
        openFaulty(fault);
        EXPECT_EQ(mParser.parseCompleteFile(), ok);
        EXPECT_EQ(mLog.take(), messages);
    }
    EXPECT_LE(system.mReads, 20) << "far fewer than there are lines";
    openFaulty(EIO);
    EXPECT_EQ(mParser.parseLines(-1), 37'449);
    ASSERT_TRUE(mParser.openFile(QStringLiteral("/proc/self/mem")));
    EXPECT_EQ(mParser.parseLines(-1), 0);
    EXPECT_EQ(mParser.parseLines(-1), -2) << "a failure is told once";
    for (const LogEvent& event : mLog.mEvents) {
        EXPECT_EQ(event.mOrigin, "CsvParser source/CsvParser.cpp CsvParser::parseLines");
    }
    EXPECT_EQ(mLog.take(),
              (Lines{kMessage, "ERROR /proc/self/mem:1: Reading failed: Input/output error"}));
}

TEST_F(CsvParserTest, KeepsNoDescriptor)
{
    const QString name = mFiles.make("file", "1\nbad\n");
    const int before = openDescriptors();
    for (int i = 0; i < 100; ++i) {
        CollectingParser parsed;
        parsed.openFile(name);
        parsed.openFile(name); // in the place of one that is open
        parsed.parseCompleteFile();
        CollectingParser copy(parsed);
        copy.openFile(name);
        copy = parsed;
    }
    EXPECT_EQ(openDescriptors(), before);
}
} // namespace
