#include "CommandRunner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>

namespace {
/** Far more than any command takes on a slow machine. */
constexpr char kHangsSeconds[] = "120";
constexpr int kHung = 128 + SIGKILL;

constexpr char kOutputName[] = ".stdout";
constexpr char kErrorsName[] = ".stderr";

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/** Not by QProcess, which does not work in the emulator of the ARM build. */
pid_t start(const Words& command, const std::string& output, const std::string& errors)
{
    std::vector<char*> words;
    std::transform(command.begin(), command.end(), std::back_inserter(words),
                   [](const std::string& word) { return const_cast<char*>(word.c_str()); });
    words.push_back(nullptr);
    constexpr int kNewFile = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(), kNewFile, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, errors.c_str(), kNewFile, 0600);
    pid_t child = -1;
    EXPECT_EQ(posix_spawnp(&child, words[0], &files, nullptr, words.data(), environ), 0);
    posix_spawn_file_actions_destroy(&files);
    return child;
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
    const std::string directory = std::filesystem::path(path("")).parent_path();
    const Words prepared = {"timeout",
                            "-s",
                            "KILL",
                            kHangsSeconds,
                            "env",
                            "-C",
                            directory,
                            "-u",
                            "XDG_CONFIG_HOME",
                            "XDG_CONFIG_DIRS=/nowhere/xdg",
                            "LC_ALL=C.UTF-8",
                            "HOME=" + directory};
    std::signal(SIGINT, SIG_DFL); // ignored if the tests were started in the background
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = start(joined(prepared, command), path(kOutputName), path(kErrorsName));
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    const CommandResult result = {WIFEXITED(status) ? WEXITSTATUS(status) : -1, seconds.count(),
                                  secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
                                  readFile(kOutputName), readFile(kErrorsName)};
    EXPECT_NE(result.mExitCode, kHung) << command.front() << " had to be killed" << result;
    return result;
}
