#pragma once

#include <exception>
#include <stdexcept>

namespace base {

/**
 * The input is at fault, or a result cannot be written: ends the command with status 1.
 *
 * what() is the complete message for the user, without the program's name: the file, the line or
 * byte where there is one, the value, and what was expected.
 */
class CaseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** A command has said in its result that its input is not good: ends it with status 1. */
class BadVerdict : public std::exception
{
};

} // namespace base
