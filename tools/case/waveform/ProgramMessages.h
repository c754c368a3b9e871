#pragma once

#include <log4cxx/appender.h>
#include <log4cxx/level.h>

#include <string>
#include <vector>

namespace waveform {

/**
 * Collects the errors that the program's own classes log while it lives, so that a tool can report
 * them with the program's messages.
 */
class ProgramMessages
{
public:
    ProgramMessages();
    ProgramMessages(const ProgramMessages&) = delete;
    ProgramMessages& operator=(const ProgramMessages&) = delete;
    ~ProgramMessages();

    /** ERROR and FATAL messages so far, in order, as the program logs them. */
    const std::vector<std::string>& errors() const { return mErrors; }

private:
    std::vector<std::string> mErrors;
    log4cxx::LevelPtr mLevelBefore;
    log4cxx::AppenderPtr mAppender;
};

} // namespace waveform
