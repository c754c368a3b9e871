#pragma once

#include <QString>
#include <string>

/** Converts texts of other sources for a message. Independent of the logger. */

/** A file name or system text in the encoding of the log, the local 8-bit encoding. */
inline std::string local8Bit(const QString& text)
{
    return text.toLocal8Bit().toStdString();
}

/**
 * The beginning of a text of any length, such as a line of a file. Command lines are never cut;
 * longer texts are unreadable in a log.
 */
inline std::string excerpt(const QString& text)
{
    constexpr int kMaxCharacters = 64 * 1024 + 1;
    return local8Bit(text.left(kMaxCharacters)) + (text.size() > kMaxCharacters ? "..." : "");
}
