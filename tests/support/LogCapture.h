#pragma once

#include <log4cxx/appender.h>

#include <string>
#include <vector>

/** What the program logged, and how much it counted. */
struct LogEvent
{
    std::string mLevel;
    std::string mLogger;
    std::string mText;
    std::string mFile;   ///< source file of the location record
    std::string mMethod; ///< "Class::operation" of the location record
};

using Lines = std::vector<std::string>;

/**
 * Takes all log output of every level while it lives. At its end it expects that every ERROR and
 * FATAL that was logged had been counted, and nothing else.
 */
class LogCapture
{
public:
    LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture();

    /** "LEVEL text" of each event since the last call. */
    Lines takeLines();

    std::vector<LogEvent> mEvents; ///< since the last takeLines()

    /** Counted since construction. */
    int errors() const;
    int fatals() const;

private:
    log4cxx::AppenderPtr mAppender;
    int mErrorsBefore;
    int mFatalsBefore;
    int mErrorsLogged = 0;
    int mFatalsLogged = 0;
};
