#pragma once

#include <string>

namespace states {

/** A position in a TOML file; both numbers count from 1. */
struct Location
{
    unsigned mLine = 0;
    unsigned mColumn = 0;
};

/** "file:line:column: ", the beginning of each message. */
inline std::string messagePrefix(const std::string& fileName, const Location& location)
{
    return fileName + ':' + std::to_string(location.mLine) + ':' +
           std::to_string(location.mColumn) + ": ";
}

} // namespace states
