#include "CommandRunner.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>

#include <csignal>
#include <filesystem>

namespace {
/** Far beyond what any command takes on a slow machine. */
constexpr int kHangsMilliseconds = 120'000;

double cpuSecondsOfChildren()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

QProcessEnvironment environment(const QString& home)
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert("HOME", home);
    variables.insert("LC_ALL", "C.UTF-8");
    variables.insert("XDG_CONFIG_DIRS", "/nowhere/xdg");
    variables.remove("XDG_CONFIG_HOME");
    return variables;
}
} // namespace

std::ostream& operator<<(std::ostream& stream, const CommandResult& result)
{
    return stream << "\nexit code " << result.mExitCode << " after " << result.mSeconds
                  << " s\n-- standard output\n"
                  << result.mOutput << "-- standard error\n"
                  << result.mErrors << "--\n";
}

void CommandRunner::writeFile(const std::string& name, const std::string& content) const
{
    mFiles.make(name, content);
}

std::string CommandRunner::readFile(const std::string& name) const
{
    return std::filesystem::exists(path(name)) ? ::readFile(path(name)) : "";
}

CommandResult CommandRunner::run(const Words& command) const
{
    const QString directory = QDir::cleanPath(QString::fromStdString(path("")));
    QStringList words;
    for (const std::string& word : command) {
        words += QString::fromStdString(word);
    }
    QProcess process;
    process.setWorkingDirectory(directory);
    process.setProcessEnvironment(environment(directory));
    process.setStandardInputFile(QProcess::nullDevice());
    const double cpuSecondsBefore = cpuSecondsOfChildren();
    std::signal(SIGINT, SIG_DFL); // ignored where the tests were started in the background
    QElapsedTimer timer;
    timer.start();
    process.start(words.first(), words.mid(1));
    const bool hasEnded = process.waitForFinished(kHangsMilliseconds);
    if (!hasEnded) {
        process.kill();
        process.waitForFinished();
    }
    const CommandResult result = {
        process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        static_cast<double>(timer.elapsed()) / 1e3, cpuSecondsOfChildren() - cpuSecondsBefore,
        process.readAllStandardOutput().toStdString(),
        process.readAllStandardError().toStdString()};
    EXPECT_TRUE(hasEnded) << command.front() << " did not start or had to be killed" << result;
    return result;
}
