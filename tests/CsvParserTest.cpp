#include "CsvParser.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <tuple>

#include "Files.h"
#include "LogCapture.h"
#include "SeededRandom.h"
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

TEST_F(CsvParserTest, ReadsLikeAFileInTextMode)
{
    const std::string kPieces[] = {"\n",   "\r",   "a",   "1",        " ",
                                   "\t",   "#",    ",",   ";",        "\xC3",
                                   "\xA4", "\xFF", "\0"s, "\xC2\xA0", "\xEF\xBB\xBF"};
    std::mt19937 random = seededRandom();
    for (int round = 0; round < 300; ++round) {
        std::string bytes;
        for (auto left = random() % 60; left > 0; --left) {
            bytes += kPieces[random() % std::size(kPieces)];
        }
        SCOPED_TRACE(testing::PrintToString(bytes));
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

TEST_F(CsvParserTest, LinesMayCrossAndExceedReadBlocks)
{
    for (const int size : {1, 100'000, 262'143, 262'144, 524'288, 900'001}) {
        const std::string line = repeated("x", size);
        for (const char* end : {"", "\n"}) {
            mParser.mLines.clear();
            ASSERT_TRUE(open(line + "\nnext\n" + line + end));
            EXPECT_TRUE(mParser.parseCompleteFile());
            EXPECT_EQ(mParser.mLines, (Lines{line, "next", line})) << size;
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
    EXPECT_EQ(mLog.takeFrom("CsvParser source/CsvParser.cpp CsvParser::openFileInternal"),
              Lines{"FATAL openFileInternal() : Das I/O-Device '/größe' existiert nicht."});
    EXPECT_EQ(mParser.lineNumber(), 0U);
    EXPECT_EQ(mParser.parseLines(1), -1);
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

    ASSERT_TRUE(open("1"));
    EXPECT_EQ(mParser.parseLines(0), 0);
    std::ofstream(mFiles.path("file"), std::ios::app) << "2\n";
    EXPECT_TRUE(mParser.parseNextLine());
    EXPECT_EQ(mParser.mLines.back(), "12") << "it grew after its end was seen";
    std::filesystem::remove(mFiles.path("file"));
    EXPECT_EQ(mParser.parseLines(1), -1);
}

TEST_F(CsvParserTest, FaultsOfALaterReadAreHandled)
{
    constexpr int kLines = 40'000;
    VirtualSystem system;
    const auto openFaulty = [&](int fault) {
        mParser.mLines.clear();
        ASSERT_TRUE(open(repeated("123456\n", kLines)));
        system.mReadsUntilFault = 1;
        system.mReadFault = fault;
    };
    const auto taken = [this] { return static_cast<int>(mParser.mLines.size()); };
    openFaulty(EINTR);
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.take(), total(kLines));
    openFaulty(VirtualSystem::kNothing); // shorter than its size says
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_LT(taken(), kLines);
    EXPECT_EQ(mLog.take(), total(taken()));
    const int whole = taken() - 1; // a failure leaves no unfinished line
    const std::string message = "ERROR " + mFiles.path("file") + ":" + std::to_string(whole + 1) +
                                ": Reading failed: Input/output error";
    openFaulty(EIO);
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.take(), (Lines{message, total(whole)[0]}));
    EXPECT_LE(system.mReads, 20) << "far fewer than there are lines";
    openFaulty(EIO);
    EXPECT_EQ(mParser.parseLines(-1), whole);
    EXPECT_EQ(mParser.parseLines(-1), -2) << "reported once";
    EXPECT_EQ(mLog.takeFrom("CsvParser source/CsvParser.cpp CsvParser::parseLines"),
              Lines{message});
}

TEST_F(CsvParserTest, KeepsNoDescriptor)
{
    const int before = openDescriptors();
    {
        CollectingParser parsed;
        const QString name = mFiles.make("file", "1\nbad\n");
        parsed.openFile(name);
        parsed.openFile(name); // instead of one that is open
        parsed.parseCompleteFile();
        CollectingParser copy(parsed);
        copy.openFile(name);
        copy = parsed;
    }
    EXPECT_EQ(openDescriptors(), before);
}
} // namespace
