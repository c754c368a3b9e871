#pragma once

#include <QString>
#include <string>

#include "LogText.h"

/** The message about a line with a wrong number of fields. */
inline std::string wrongFieldCount(int expected, int found, const QString& line)
{
    return "Wrong number of parameter. Expected: " + std::to_string(expected) + ", found " +
           std::to_string(found) + ": " + excerpt(line);
}
