#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <future>

#include "ControlFifo.h"
#include "ControlOptions.h"
#include "Delivery.h"
#include "EventFile.h"
#include "Files.h"
#include "LogWatch.h"
#include "PlayRequest.h"

namespace {
/** All new lines of a watch. */
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
    std::ofstream(path, std::ios::app) << bytes;
}

int departingReader = -1;
uid_t strangerAsOwner = 0;

/** The error of writing "s1" into a FIFO. */
std::string problemOf(const std::string& path)
{
    control::ControlFifo fifo(QString::fromStdString(path));
    const QString problem = fifo.open();
    return (problem.isEmpty() ? fifo.write("s1\n") : problem).toStdString();
}

/** The next line from a FIFO; waits for it. */
std::string lineFrom(int reader)
{
    std::string line;
    pollfd ready = {reader, POLLIN, 0};
    for (char byte = 0; byte != '\n' && poll(&ready, 1, 60'000) == 1;) {
        line.append(&byte, static_cast<size_t>(std::max<ssize_t>(read(reader, &byte, 1), 0)));
    }
    return line;
}

/** Runs "vx-control" with these options in a thread; its exit status. */
std::future<int> delivery(const QStringList& options, const control::PlayRequest& request)
{
    return std::async(std::launch::async, [=] {
        control::ControlOptions parsed;
        EXPECT_EQ(parsed.read(QStringList{"vx-control"} + options + QStringList{"once", "1"}), "");
        return control::Delivery(parsed, request).run();
    });
}
} // namespace

/** Called between opening and writing, where a reader may close the FIFO. */
extern "C" int fstat(int descriptor, struct stat* status) noexcept
{
    if (departingReader >= 0) {
        close(departingReader);
        departingReader = -1;
    }
    const int result = fstatat(descriptor, "", status, AT_EMPTY_PATH);
    status->st_uid = strangerAsOwner != 0 ? strangerAsOwner : status->st_uid;
    return result;
}

TEST(ControlFifoTest, ReportsWhyNothingCanBeWritten)
{
    const TestFiles files;
    const auto problemOf = [&](const std::string& name) { return ::problemOf(files.path(name)); };
    files.make("file", "kept");
    QDir(files.path("").c_str()).mkdir("directory");
    ASSERT_EQ(mkfifo(files.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(problemOf("missing"),
              files.path("missing") + ": there is no such FIFO; is the simulator running?");
    EXPECT_EQ(problemOf("file"), files.path("file") + ": not a FIFO; nothing was written");
    EXPECT_EQ(readFile(files.path("file")), "kept");
    ASSERT_EQ(mknod(files.path("socket").c_str(), S_IFSOCK | 0600, 0), 0);
    EXPECT_EQ(problemOf("socket"), files.path("socket") + ": not a FIFO; nothing was written");
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
    EXPECT_EQ(problem, files.path("fifo") + ": it is full: its reader takes no commands");
    departingReader = reader;
    EXPECT_EQ(problemOf("fifo"),
              files.path("fifo") + ": nobody reads it; is the simulator running?");
}

TEST(ControlFifoTest, WarnsOfAnUnsafeFifo)
{
    const TestFiles files;
    const std::string path = files.path("fifo");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    control::ControlFifo fifo(QString::fromStdString(path));
    ASSERT_EQ(fifo.open(), "");
    EXPECT_EQ(fifo.warnings(), QStringList());
    strangerAsOwner = 4711;
    ASSERT_EQ(chmod(path.c_str(), 0620), 0);
    EXPECT_EQ(fifo.warnings().join('\n').toStdString(),
              path +
                  ": it belongs to user 4711, neither to you nor to root; is its reader the "
                  "simulator?\n" +
                  path +
                  ": others can send commands or take yours away (mode 0620); chmod 0600 "
                  "prevents that");
    strangerAsOwner = 0;
    close(reader);
}

/** The answers of both are the same line. */
TEST(DeliveryTest, EachOfTwoGetsItsOwnAnswer)
{
    const TestFiles files;
    const std::string path = files.path("fifo");
    const std::string log = files.path("log");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    const QStringList options = {"--fifo", path.c_str(), "--log", log.c_str(), "--wait"};
    ASSERT_EQ(::problemOf(path), "") << "a command that waits already";
    std::future<int> early = delivery(options + QStringList{"0.01"}, {true, 1});
    EXPECT_EQ(early.get(), 1);
    int waitingBytes = 0;
    ioctl(reader, FIONREAD, &waitingBytes);
    EXPECT_EQ(waitingBytes, 3) << "nothing is written behind it";
    std::future<int> first = delivery(options + QStringList{"60"}, {true, 1});
    std::future<int> second = delivery(options + QStringList{"60"}, {true, 1});
    EXPECT_EQ(lineFrom(reader), "s1\n");
    writeFile(log, "Execute Config 1 once\n");
    EXPECT_EQ(lineFrom(reader), "s1\n");
    const auto isDone = [](std::future<int>& it) {
        return it.wait_for(std::chrono::milliseconds(200)) == std::future_status::ready;
    };
    EXPECT_FALSE(isDone(first) || isDone(second)) << "the answer was not theirs";
    append(log, "Execute Config 1 once\n");
    EXPECT_EQ(lineFrom(reader), "s1\n") << "one has its answer, so the other writes";
    while (!isDone(first) && !isDone(second)) {
    }
    EXPECT_NE(isDone(first), isDone(second));
    append(log, "Wrong Config: 1\n");
    EXPECT_EQ(first.get() + second.get(), 1);
    close(reader);
}

TEST(EventFileTest, AppendsToEventFilesOnly)
{
    const TestFiles files;
    files.make("events", "{\"run\":\"ended\"}\n");
    files.make("sag.csv", "0;0;0;0;50\n");
    const auto appended = [&](const std::string& name, const QString& problem) {
        control::EventFile events(QString::fromStdString(files.path(name)));
        const QString unusable = events.open();
        return (unusable.isEmpty() ? events.append(1'795'624'251'191'947'685, "s12\n", problem)
                                   : unusable)
            .toStdString();
    };
    EXPECT_EQ(appended("events", ""), "");
    EXPECT_EQ(appended("events", "a \"b\" \xc3\xa4"), "");
    const std::string begin =
        R"({"t":1795624251191947685,"file":"simulator_control","bytes":4,"accepted":)";
    EXPECT_EQ(readFile(files.path("events")),
              "{\"run\":\"ended\"}\n" + begin + R"(true,"text":"s12","by":"vx-control"})" + "\n" +
                  begin + R"(false,"text":"s12","reason":"a \"b\" ä","by":"vx-control"})" + "\n");
    EXPECT_EQ(appended("sag.csv", ""),
              files.path("sag.csv") + ": expected the events of a run, one JSON object a line");
    EXPECT_EQ(control::EventFile("/dev/full").open(), "/dev/full: expected a regular file");
    EXPECT_EQ(control::EventFile("/no/such").open(), "/no/such: No such file or directory");
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit noMore = {100, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &noMore);
    EXPECT_EQ(appended("events", ""), files.path("events") + ": File too large");
}

TEST(LogWatchTest, FollowsTheLogThroughRotationAndTruncation)
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

TEST(LogWatchTest, RejectsWhatIsNotAFile)
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
