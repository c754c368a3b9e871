#pragma once

#include <QString>

namespace control {

/** Exit statuses beside EXIT_SUCCESS. */
inline constexpr int kNotDone = 1;
inline constexpr int kCommandLineAtFault = 2;

/** The system's text of an error number. */
QString systemText(int error);

/** Prints one line on standard error, with the program's name in front. */
void warn(const QString& text);

/** As warn(); returns the status, for the caller to return. */
int fail(const QString& problem, int status = kNotDone);

/**
 * Writes a result to standard output, to its end.
 * @return EXIT_SUCCESS, or kNotDone after a message on why it could not be written
 */
int print(const QString& text);

} // namespace control
