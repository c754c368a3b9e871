#include "CsvParser.h"

#include <gtest/gtest.h>

#include <QFile>

#include <cerrno>
#include <filesystem>
#include <random>

#include "Files.h"
#include "LogCapture.h"
#include "VirtualSystem.h"

namespace {
using namespace std::string_literals;

/** Collects the data parts and rejects those that begin with "bad". */
class CollectingParser : public CsvParser
{
public:
    bool parseLine(QString line) override
    {
        if (line.startsWith(QLatin1String("bad"))) {
            return false;
        }
        mLines.push_back(line.toStdString());
        mNumbers.push_back(mLineNumber);
        return true;
    }

    quint32 lineNumber() const { return mLineNumber; }

    Lines mLines;
    std::vector<quint32> mNumbers;
};

std::string repeated(const std::string& text, size_t times)
{
    std::string all;
    for (size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

class CsvParserTest : public testing::Test
{
protected:
    /** Parses a file with these bytes; what the parser logged is forgotten. */
    bool parse(const std::string& bytes)
    {
        EXPECT_TRUE(mParser.openFile(mFiles.make("file", bytes)));
        const bool ok = mParser.parseCompleteFile();
        mLog.takeLines();
        return ok;
    }

    std::string path() const { return mFiles.path("file"); }

    LogCapture mLog;
    TestFiles mFiles;
    CollectingParser mParser;
};

TEST_F(CsvParserTest, HandsOverDataPartsAndCountsEveryLine)
{
    const struct
    {
        std::string bytes;
        Lines lines;
        quint32 count;
    } kCases[] = {
        {"", {}, 0},
        {"a", {"a"}, 1},
        {"a\n", {"a"}, 1},
        {"a\nb", {"a", "b"}, 2},
        {"\n\n", {}, 2},
        {"# comment\n   # comment\n \t \n", {}, 3},
        {"a#b#c\n", {"a"}, 1},
        {"1,2,a.csv\n", {"1,2,a.csv"}, 1},
        {"  1 ,  2,a.csv   # first case\r\n", {"1 , 2,a.csv"}, 1},
        {"a\t \tb\r\n\r\nc\r\n", {"a b", "c"}, 3},
        {"1\r2\n", {"12"}, 1},
        {"\ra\r\r\n\r", {"a"}, 2},
        {"a\xC2\xA0\xC2\xA0"s + "b\xC2\xA0\n\xC2\xA0\n", {"a b"}, 2},
        {"a\0b\nc\n"s, {"a", "c"}, 2},
        {"\0a\n \0#\n"s, {}, 2},
        {"gr\xC3\xB6\xC3\x9F"s + "e\n", {"größe"}, 1},
        {"\xFF\x61\n\xC3\n", {"\uFFFD\x61", "\uFFFD"}, 2},
        {"\xEF\xBB\xBF"s + "1\n", {"1"}, 1},
    };
    for (const auto& row : kCases) {
        SCOPED_TRACE(testing::PrintToString(row.bytes));
        CollectingParser parser;
        ASSERT_TRUE(parser.openFile(mFiles.make("file", row.bytes)));
        mLog.takeLines();
        EXPECT_TRUE(parser.parseCompleteFile());
        EXPECT_EQ(parser.mLines, row.lines);
        EXPECT_EQ(mLog.takeLines(),
                  Lines{"INFO Total " + std::to_string(row.count) + " lines parsed."});
    }
}

TEST_F(CsvParserTest, ReadsAsAFileInTextModeDoes)
{
    const std::vector<std::string> kPieces{"\n",   "\r",   "a",   "1",           " ",
                                           "\t",   "#",    "\0"s, ",",           "\xC3",
                                           "\xA4", "\xFF", ";",   "\xE2\x80\xA8"};
    const auto seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        std::string bytes;
        for (auto left = random() % 60; left > 0; --left) {
            bytes += kPieces[random() % kPieces.size()];
        }
        SCOPED_TRACE(testing::PrintToString(bytes));
        QFile file(mFiles.make("file", bytes));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text | QIODevice::Unbuffered));
        Lines expected;
        quint32 count = 0;
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
        ASSERT_EQ(parser.lineNumber(), count);
    }
}

TEST_F(CsvParserTest, LinesMayCrossAndExceedTheBlocksThatAreRead)
{
    for (const size_t size :
         {1U, 40'000U, 65'534U, 65'535U, 65'536U, 65'537U, 131'072U, 300'001U}) {
        const std::string line(size, 'x');
        for (const char* end : {"", "\n"}) {
            CollectingParser parser;
            ASSERT_TRUE(parser.openFile(mFiles.make("file", line + "\nnext\n" + line + end)));
            EXPECT_TRUE(parser.parseCompleteFile());
            EXPECT_EQ(parser.mLines, (Lines{line, "next", line})) << size;
        }
    }
}

TEST_F(CsvParserTest, ReadsFarFewerTimesThanThereAreLines)
{
    const std::string bytes = repeated("0;0;0;0;50;0;0;0;0;\n", 50'000);
    const QString name = mFiles.make("file", bytes);
    VirtualSystem system;
    ASSERT_TRUE(mParser.openFile(name));
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_EQ(mParser.mLines.size(), 50'000U);
    EXPECT_LE(system.mReads, 20);
}

TEST_F(CsvParserTest, FirstRejectedLineEndsTheParse)
{
    const std::string bytes = "1\n2\n\n4\nbad\n6\n7\n8\n9\n10\n";
    ASSERT_TRUE(mParser.openFile(mFiles.make("file", bytes)));
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mParser.mLines, (Lines{"1", "2", "4"}));
    EXPECT_EQ(mParser.mNumbers, (std::vector<quint32>{1, 2, 4}));
    ASSERT_EQ(mLog.mEvents.size(), 2U);
    EXPECT_EQ(mLog.mEvents[0].mLogger, "CsvParser");
    EXPECT_EQ(mLog.mEvents[0].mMethod, "CsvParser::parseCompleteFile");
    EXPECT_EQ(mLog.mEvents[0].mFile, "source/CsvParser.cpp");
    EXPECT_EQ(mLog.takeLines(),
              (Lines{"ERROR Problem while handling line. abort.", "INFO Total 5 lines parsed."}));
    EXPECT_EQ(mLog.errors(), 1);
}

TEST_F(CsvParserTest, FileThatDoesNotOpen)
{
    const std::string missing = mFiles.path("größe");
    const std::string directory = mFiles.path("");
    const std::string start = "FATAL openFileInternal() : Das I/O-Device '";
    const struct
    {
        std::string name;
        std::string message;
    } kCases[] = {
        {missing, start + missing + "' existiert nicht."},
        {directory,
         start + directory + "' kann nicht geöffnet werden: file to open is a directory."},
    };
    for (const auto& row : kCases) {
        parse("1\n");
        EXPECT_FALSE(mParser.openFile(QString::fromStdString(row.name)));
        EXPECT_EQ(mParser.lineNumber(), 0U);
        EXPECT_EQ(mParser.fileName().toStdString(), row.name);
        EXPECT_FALSE(mParser.parseCompleteFile());
        EXPECT_EQ(mLog.mEvents.at(0).mMethod, "CsvParser::openFileInternal");
        EXPECT_EQ(mLog.takeLines(), (Lines{row.message, "ERROR config file not found"}));
        EXPECT_EQ(mParser.parseLines(1), -1);
    }
    EXPECT_EQ(mLog.fatals(), 2);
    EXPECT_EQ(mLog.errors(), 2);
}

TEST_F(CsvParserTest, WithoutAFile)
{
    EXPECT_TRUE(mParser.fileName().isNull());
    EXPECT_TRUE(mParser.canReadLine());
    EXPECT_EQ(mParser.parseLines(-1), -1);
    mParser.closeFile();
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.takeLines(), Lines{"ERROR config file not found"});
}

TEST_F(CsvParserTest, AfterTheParseTheFileIsClosedAndKept)
{
    EXPECT_TRUE(parse("1\n"));
    EXPECT_FALSE(holdsOpen(path()));
    EXPECT_FALSE(mParser.canReadLine());
    EXPECT_EQ(mParser.parseLines(1), -1);
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.takeLines(), Lines{"INFO Total 0 lines parsed."});
    mParser.closeFile();
    mParser.closeFile();
    EXPECT_TRUE(mParser.canReadLine());
    EXPECT_TRUE(parse("2\n"));
    EXPECT_EQ(mParser.mLines, (Lines{"1", "2"}));
}

TEST_F(CsvParserTest, ParsesPiecewise)
{
    ASSERT_TRUE(mParser.openFile(mFiles.make("file", "1\n\nbad\n4\n5\n6")));
    EXPECT_EQ(mParser.parseLines(0), 0);
    EXPECT_EQ(mParser.lineNumber(), 0U);
    EXPECT_EQ(mParser.parseLines(3), 2); // the blank line counts, the rejected one does not
    EXPECT_EQ(mParser.lineNumber(), 3U);
    EXPECT_EQ(mParser.parseLines(1), 1);
    EXPECT_EQ(mParser.parseLines(-1), 2);
    EXPECT_EQ(mParser.parseLines(3), -2);
    EXPECT_EQ(mParser.mLines, (Lines{"1", "4", "5", "6"}));
    EXPECT_EQ(mParser.mNumbers, (std::vector<quint32>{1, 4, 5, 6}));
    EXPECT_EQ(mLog.takeLines(), Lines{});

    std::filesystem::remove(path());
    EXPECT_EQ(mParser.parseLines(1), -1);
}

TEST_F(CsvParserTest, CompleteParseBeginsAgainAfterAPiece)
{
    ASSERT_TRUE(mParser.openFile(mFiles.make("file", "1\n2\n3\n")));
    EXPECT_EQ(mParser.parseLines(2), 2);
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_EQ(mParser.mLines, (Lines{"1", "2", "1", "2", "3"}));
    EXPECT_EQ(mParser.mNumbers.back(), 3U);
}

TEST_F(CsvParserTest, ReadThatFailsAtOnceIsReportedOnce)
{
    const QString name = QStringLiteral("/proc/self/mem");
    ASSERT_TRUE(mParser.openFile(name));
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.takeLines(), (Lines{"ERROR /proc/self/mem:1: Reading failed: Input/output error",
                                       "INFO Total 0 lines parsed."}));
    ASSERT_TRUE(mParser.openFile(name));
    EXPECT_EQ(mParser.parseLines(-1), 0);
    EXPECT_EQ(mParser.parseLines(-1), -2);
    EXPECT_EQ(mLog.takeLines(),
              Lines{"ERROR /proc/self/mem:1: Reading failed: Input/output error"});
    EXPECT_EQ(mLog.errors(), 2);
}

TEST_F(CsvParserTest, ReadThatFailsLaterKeepsTheWholeLinesBefore)
{
    const QString name = mFiles.make("file", repeated("1234567\n", 10'000));
    const std::string message = "ERROR " + path() + ":8193: Reading failed: Input/output error";
    const auto failSecondRead = [](VirtualSystem& system) {
        system.mReadsUntilFault = 1;
        system.mReadFault = EIO;
    };
    VirtualSystem system;
    ASSERT_TRUE(mParser.openFile(name));
    failSecondRead(system);
    EXPECT_FALSE(mParser.parseCompleteFile());
    EXPECT_EQ(mParser.mLines.size(), 8192U);
    EXPECT_EQ(mLog.takeLines(), (Lines{message, "INFO Total 8192 lines parsed."}));

    ASSERT_TRUE(mParser.openFile(name));
    failSecondRead(system);
    EXPECT_EQ(mParser.parseLines(-1), 8192);
    EXPECT_EQ(mLog.takeLines(), Lines{message});
}

TEST_F(CsvParserTest, InterruptedReadIsRepeated)
{
    VirtualSystem system;
    ASSERT_TRUE(mParser.openFile(mFiles.make("file", "1\n2\n")));
    system.mReadFault = EINTR;
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_EQ(mParser.mLines, (Lines{"1", "2"}));
}

TEST_F(CsvParserTest, FileShorterThanItsSizeEnds)
{
    const QString name = mFiles.make("file", repeated("1234567\n", 10'000));
    VirtualSystem system;
    ASSERT_TRUE(mParser.openFile(name));
    system.mReadsUntilFault = 1;
    system.mReadFault = -1;
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_EQ(mLog.takeLines(), Lines{"INFO Total 8192 lines parsed."});
}

TEST_F(CsvParserTest, KernelAttributeEnds)
{
    const std::string attribute =
        "/sys/kernel/uevent_seqnum"; // a page by its size, a line by its text
    if (!std::filesystem::exists(attribute)) {
        GTEST_SKIP() << attribute << " does not exist";
    }
    ASSERT_TRUE(mParser.openFile(QString::fromStdString(attribute)));
    EXPECT_TRUE(mParser.parseCompleteFile());
    EXPECT_EQ(mParser.mLines.size(), 1U);
}

TEST_F(CsvParserTest, KeepsNoDescriptor)
{
    const QString name = mFiles.make("file", "1\nbad\n");
    const int before = openDescriptors();
    for (int i = 0; i < 100; ++i) {
        CollectingParser left;
        left.openFile(name);
        left.openFile(name); // in the place of one that is open
        CollectingParser parsed;
        parsed.openFile(name);
        parsed.parseCompleteFile();
        const CollectingParser copy(parsed); // NOLINT(performance-unnecessary-copy-initialization)
        CollectingParser assigned;
        assigned.openFile(name);
        assigned = parsed;
        CollectingParser closed;
        closed.openFile(name);
        closed.closeFile();
    }
    EXPECT_EQ(openDescriptors(), before);
}
} // namespace
