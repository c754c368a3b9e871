#pragma once

#include <gmock/gmock.h>

#include <map>
#include <string>

#include "CommandRunner.h"

/** A write, or a command, in the events of the sandbox. */
struct Event
{
    qint64 mArrivalNs;
    std::string mFile;
    int mBytes;
    bool mIsAccepted;
    std::vector<quint32> mWords;
};

/** The events of writes and commands. */
std::vector<Event> eventsOf(const std::string& text);

/** Runs programs in the sandbox, and the simulator in particular, in a directory of its own. */
class SandboxedTest : public testing::Test
{
protected:
    /** Writes the logging configuration that kSimulator names. */
    SandboxedTest();

    /** Leaves the line with the path of the control FIFO out of the errors. */
    CommandResult sandbox(const Words& arguments) const;
    CommandResult sandbox(const Words& options, const Words& program) const;

    /** A command that runs `script` first and then becomes `program`. */
    static Words after(const std::string& script, const Words& program);

    /** A logging configuration: "LEVEL LOGGER TEXT" lines into the file `logName`. */
    static std::string trackConfiguration(const std::string& logName);

    /** The log, with STAMP and SECONDS in place of values that differ between runs. */
    std::string log(const std::string& name = "simulator.log") const;

    /** What the program printed before the sandbox's summary. */
    static std::string programOutput(const CommandResult& result);

    /** The summary's values by their names; empty when there is none. */
    static std::map<std::string, std::string> summary(const CommandResult& result);

    CommandRunner mRunner;
};

/** The simulator with the configuration files of the test's directory. */
const Words kSimulator = {VX_SIMULATOR, "--track", "track.xml", "--config", "vx-simulator.conf"};

inline constexpr char kStartLine[] =
    "INFO vx-simulator Starting (Version 1.2.1524 by yocto, Build STAMP)\n";
