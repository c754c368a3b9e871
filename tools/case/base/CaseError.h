#pragma once

#include <exception>
#include <stdexcept>

namespace base {

/**
 * The input is wrong, or a result cannot be written: ends the command with status 1.
 *
 * what() is the complete message for the user, without the program's name: the file, the line or
 * byte if there is one, the value, and what was expected.
 */
class CaseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** Ends a command with this status, without a message. */
class EndWith : public std::exception
{
public:
    explicit EndWith(int status) : mStatus(status) {}

    int status() const { return mStatus; }

private:
    int mStatus;
};

} // namespace base
