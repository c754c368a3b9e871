/**
 * Start-up: time from exec to the first block in the driver, with a case configuration of three
 * one-second files, and the time of each part.
 */
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "BenchDevice.h"
#include "BenchFiles.h"
#include "FixedPaths.h"

namespace {
constexpr int kRounds = 31;
constexpr int kSamplesPerSecond = 18'000;
constexpr char kTrackConfig[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<log4j:configuration xmlns:log4j=\"http://jakarta.apache.org/log4j/\">\n"
    "<appender name=\"console\" class=\"org.apache.log4j.ConsoleAppender\">\n"
    "<layout class=\"org.apache.log4j.PatternLayout\">"
    "<param name=\"ConversionPattern\" value=\"%d %p %c %m%n\"/></layout></appender>\n"
    "<root><priority value=\"info\"/><appender-ref ref=\"console\"/></root>\n"
    "</log4j:configuration>\n";

double nowMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
}

pid_t start(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(null, STDOUT_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    return child;
}

double untilExit(const std::vector<std::string>& command)
{
    const double begin = nowMilliseconds();
    waitpid(start(command), nullptr, 0);
    return nowMilliseconds() - begin;
}

/** Requires: the sample buffer is a FIFO. */
double untilFirstBlock(const std::vector<std::string>& command)
{
    const int buffer = open(kSampleBufferPath, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const double begin = nowMilliseconds();
    const pid_t child = start(command);
    pollfd readable{buffer, POLLIN, 0};
    poll(&readable, 1, 10'000);
    const double taken = nowMilliseconds() - begin;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(buffer);
    return taken;
}

void report(const char* what, const std::function<double()>& once)
{
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        times.push_back(once());
    }
    std::sort(times.begin(), times.end());
    std::printf("  %-64s %7.2f ms (largest %.2f)\n", what, times[kRounds / 2], times.back());
}
} // namespace

int main()
{
    makeBenchDevice();
    std::filesystem::remove(kSampleBufferPath);
    mkfifo(kSampleBufferPath, 0600);
    BenchFiles files;
    const std::string values = files.valueFile(kSamplesPerSecond).toStdString();
    const QByteArray cases =
        QByteArray::fromStdString("0,1," + values + "\n1,1," + values + "\n2,1," + values + "\n");
    const std::string config = files.textFile(QStringLiteral("cases.conf"), cases).toStdString();
    const std::string noCases = files.textFile(QStringLiteral("no.conf"), "0,1,\n").toStdString();
    const std::string track =
        files.textFile(QStringLiteral("track.xml"), kTrackConfig).toStdString();
    const std::string program = VX_SIMULATOR;

    std::printf("Start-up, median of %d:\n", kRounds);
    report("fork, exec and exit of /bin/true", [] { return untilExit({"/bin/true"}); });
    report("--version: the above, the dynamic linker, Qt", [&] {
        return untilExit({program, "--version"});
    });
    report("no value file: the above, log4cxx, the control FIFO", [&] {
        return untilExit({program, "--track", track, "--config", noCases});
    });
    report("first block, three value files of one second", [&] {
        return untilFirstBlock({program, "--track", track, "--config", config});
    });
    return 0;
}
