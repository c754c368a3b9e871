#pragma once

#include <string>
#include <string_view>

namespace base {

/** True when the name is that of an encoding, such as "windows-1251" or "GB18030". */
bool isEncoding(const std::string& name);

/** A text of a file, and how its bytes were read. */
struct DecodedText
{
    std::string mText; ///< UTF-8
    /** Set when no encoding was given and the bytes are not UTF-8: they were read as Latin-1. */
    bool mIsGuessed = false;
};

/**
 * @param encoding name of the encoding of the bytes; empty is UTF-8 or, where they are not UTF-8,
 *        Latin-1. A byte order mark is left out.
 * Requires: encoding is empty or isEncoding().
 */
DecodedText decodeText(std::string_view bytes, const std::string& encoding);

/** The remark when the encoding of a text was guessed. */
inline constexpr const char* kGuessedEncoding =
    "texts are not UTF-8, so they are read as Latin-1; see --encoding";

} // namespace base
