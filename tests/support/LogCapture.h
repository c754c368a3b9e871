#pragma once

#include <log4cxx/appender.h>

#include <string>
#include <vector>

/** One message and where it came from: "Logger source/File.cpp Class::operation". */
struct LogEvent
{
    std::string mLevel;
    std::string mText;
    std::string mOrigin;
};

using Lines = std::vector<std::string>;

/**
 * Captures all log output of every level while it lives. At its end it expects that exactly the
 * logged ERROR and FATAL lines were counted.
 */
class LogCapture
{
public:
    LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture();

    /** "LEVEL text" of each event since the last call. */
    Lines take();

    /** The same, and expects that each has that origin. */
    Lines takeFrom(const std::string& origin);

    std::vector<LogEvent> mEvents; ///< since the last take()
    bool mFull = false;            ///< fails as an appender does whose disk is full

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
