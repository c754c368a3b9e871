#pragma once

#include <string>
#include <string_view>

namespace base {

/** Whether there is an encoding of this name, such as "windows-1251" or "GB18030". */
bool isEncoding(const std::string& name);

/** A decoded text of a file. */
struct DecodedText
{
    std::string mText; ///< UTF-8
    /** No encoding was given and the bytes are not UTF-8, so they were read as Latin-1. */
    bool mIsGuessed = false;
};

/**
 * @param encoding name of the encoding of the bytes; empty for UTF-8 or, if they are not UTF-8,
 *        Latin-1. A byte order mark is left out.
 * Requires: encoding is empty or isEncoding().
 */
DecodedText decodeText(std::string_view bytes, const std::string& encoding);

/** The remark for a text whose encoding was guessed. */
inline constexpr const char* kGuessedEncoding =
    "texts are not UTF-8, so they are read as Latin-1; see --encoding";

} // namespace base
