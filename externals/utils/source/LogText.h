#pragma once

#include <QString>
#include <string>

/** Puts texts from elsewhere into a message. Knows no logger. */

/** A file name or system text in the encoding of the log, the local 8-bit encoding. */
inline std::string local8Bit(const QString& text)
{
    return text.toLocal8Bit().toStdString();
}

/**
 * A text that may be of any length, such as a line of a file. No command line is ever cut; what
 * is longer than one nobody would read.
 */
inline std::string excerpt(const QString& text)
{
    constexpr int kMaxCharacters = 64 * 1024 + 1;
    return local8Bit(text.left(kMaxCharacters)) + (text.size() > kMaxCharacters ? "..." : "");
}
