#include "CommandRunner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <thread>

namespace {
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kDeadline{30};
constexpr std::chrono::milliseconds kPollInterval{2};
constexpr int kNotStarted = 125;

constexpr char kOutputName[] = ".stdout";
constexpr char kErrorsName[] = ".stderr";

void redirect(int descriptor, const char* name, int flags)
{
    dup2(open(name, flags | O_CLOEXEC, 0644), descriptor);
}

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}
} // namespace

Words split(const std::string& text, char separator)
{
    Words parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

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

CommandResult CommandRunner::run(const Words& command, const std::function<void()>& prepare) const
{
    const Clock::time_point start = Clock::now();
    const pid_t child = fork();
    if (child == 0) {
        become(command, prepare);
    }
    int status = 0;
    rusage usage{};
    bool isLate = false;
    while (wait4(child, &status, WNOHANG, &usage) == 0) {
        if (!isLate && Clock::now() - start > kDeadline) {
            isLate = true;
            kill(-child, SIGKILL);
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    const CommandResult result = {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                                  std::chrono::duration<double>(Clock::now() - start).count(),
                                  secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
                                  readFile(kOutputName), readFile(kErrorsName)};
    EXPECT_FALSE(isLate) << command.front() << " had to be killed" << result;
    return result;
}

void CommandRunner::become(const Words& command, const std::function<void()>& prepare) const
{
    try {
        setpgid(0, 0);
        std::filesystem::current_path(path(""));
        redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
        redirect(STDOUT_FILENO, kOutputName, O_WRONLY | O_CREAT | O_TRUNC);
        redirect(STDERR_FILENO, kErrorsName, O_WRONLY | O_CREAT | O_TRUNC);
        setenv("HOME", std::filesystem::current_path().c_str(), 1);
        setenv("LC_ALL", "C.UTF-8", 1);
        setenv("XDG_CONFIG_DIRS", "/nowhere/xdg", 1);
        unsetenv("XDG_CONFIG_HOME");
        if (prepare) {
            prepare();
        }
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        execvp(arguments[0], arguments.data());
        std::cerr << "cannot execute " << command.front() << std::endl;
    } catch (const std::exception& error) {
        std::cerr << "cannot prepare the run: " << error.what() << std::endl;
    }
    _exit(kNotStarted);
}
