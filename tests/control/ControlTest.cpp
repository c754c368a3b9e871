#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <cstdio>

#include "ControlFifo.h"
#include "Files.h"
#include "LogWatch.h"
#include "PlayRequest.h"

namespace {
/** All lines that a watch has to give now. */
std::string newLines(control::LogWatch* watch)
{
    std::string lines;
    for (QByteArray line = watch->nextLine(); !line.isEmpty(); line = watch->nextLine()) {
        lines += line.toStdString();
    }
    return lines;
}

void append(const std::string& path, const std::string& bytes)
{
    writeFile(path, readFile(path) + bytes);
}

int departingReader = -1;
} // namespace

/** Called between opening and writing: a reader can go away there. */
extern "C" int fstat(int descriptor, struct stat* status) noexcept
{
    if (departingReader >= 0) {
        close(departingReader);
        departingReader = -1;
    }
    return fstatat(descriptor, "", status, AT_EMPTY_PATH);
}

TEST(ControlFifoTest, TellsAtOnceWhyNothingCanBeWritten)
{
    const TestFiles files;
    const auto problemOf = [&](const std::string& name) {
        return control::sendCommand(QString::fromStdString(files.path(name)), "s1\n").toStdString();
    };
    files.make("file", "kept");
    QDir(files.path("").c_str()).mkdir("directory");
    ASSERT_EQ(mkfifo(files.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(problemOf("missing"),
              files.path("missing") + ": there is no such FIFO; is the simulator running?");
    EXPECT_EQ(problemOf("file"),
              files.path("file") + ": expected a FIFO, and it is none; nothing was written");
    EXPECT_EQ(readFile(files.path("file")), "kept");
    ASSERT_EQ(mknod(files.path("socket").c_str(), S_IFSOCK | 0600, 0), 0);
    EXPECT_EQ(problemOf("socket"),
              files.path("socket") + ": expected a FIFO, and it is none; nothing was written");
    EXPECT_EQ(problemOf("directory"), files.path("directory") + ": Is a directory");
    EXPECT_EQ(problemOf("fifo"),
              files.path("fifo") + ": nobody reads it; is the simulator running?");

    const int reader = open(files.path("fifo").c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(problemOf("fifo"), "");
    char bytes[8] = {};
    EXPECT_EQ(read(reader, bytes, sizeof bytes), 3);
    EXPECT_STREQ(bytes, "s1\n");
    std::string problem;
    for (int writes = 0; problem.empty() && writes < 1'000'000; ++writes) {
        problem = problemOf("fifo");
    }
    EXPECT_EQ(problem, files.path("fifo") + ": it is full; its reader takes no commands");
    departingReader = reader;
    EXPECT_EQ(problemOf("fifo"),
              files.path("fifo") + ": nobody reads it; is the simulator running?");
}

TEST(LogWatchTest, GivesWhatComesAfterItsStartThroughRotationAndCut)
{
    const TestFiles files;
    const std::string log = files.path("log");
    control::LogWatch early(QString::fromStdString(log));
    EXPECT_EQ(newLines(&early), "");
    writeFile(log, "old\nhalf of ");
    EXPECT_EQ(newLines(&early), "old\n");
    control::LogWatch watch(QString::fromStdString(log));
    append(log, "a line\nnext");
    EXPECT_EQ(newLines(&watch), "a line\n");
    EXPECT_EQ(newLines(&early), "half of a line\n");
    append(log, " line\n");

    ASSERT_EQ(std::rename(log.c_str(), files.path("log.1").c_str()), 0);
    EXPECT_EQ(newLines(&watch), "next line\n");
    append(files.path("log.1"), "last of the old\n");
    writeFile(log, "first of the new\n");
    EXPECT_EQ(newLines(&watch), "last of the old\nfirst of the new\n");
    EXPECT_EQ(newLines(&early), "next line\nlast of the old\nfirst of the new\n");
    ASSERT_EQ(truncate(log.c_str(), 0), 0);
    append(log, "cut\n");
    EXPECT_EQ(newLines(&watch), "cut\n");
    EXPECT_EQ(newLines(&early), "cut\n");
    writeFile(log, std::string(9, '\0') + "hole\n");
    EXPECT_EQ(newLines(&watch), "hole\n");
}

TEST(LogWatchTest, RefusesWhatIsNoFile)
{
    EXPECT_EQ(control::LogWatch("/dev/null").problem(), "/dev/null: expected a regular file");
}

TEST(PlayRequestTest, FindsItsOwnVerdictInTheLog)
{
    const struct
    {
        const char* mLine;
        control::PlayRequest mRequest;
        control::RequestVerdict mVerdict;
    } rows[] = {
        {"INFO Configuration Execute Config 2 once\n",
         {true, 2},
         control::RequestVerdict::Executed},
        {"Execute Config 2 once (Configuration.cpp:200)\n",
         {true, 2},
         control::RequestVerdict::Executed},
        {"Execute Config 2 once\n", {false, 2}, control::RequestVerdict::Unknown},
        {"Execute Config 2 continuous\n", {false, 2}, control::RequestVerdict::Executed},
        {"Execute Config 12 continuous\n", {false, 2}, control::RequestVerdict::Unknown},
        {"ERROR Wrong Config: 2\n", {false, 2}, control::RequestVerdict::Rejected},
        {"ERROR Wrong Config: 20\n", {false, 2}, control::RequestVerdict::Unknown},
        {"ERROR Could not convert abcs2\n", {true, 2}, control::RequestVerdict::Rejected},
        {"ERROR Could not convert abc\n", {true, 2}, control::RequestVerdict::Unknown},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(control::verdictOf(row.mLine, row.mRequest), row.mVerdict) << row.mLine;
    }
    EXPECT_EQ(control::PlayRequest({true, 12}).line(), "s12\n");
    EXPECT_EQ(control::PlayRequest({false, 0}).line(), "0\n");
}
