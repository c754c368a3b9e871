#pragma once

#include <string_view>
#include <vector>

namespace base {

/** So much of a file's text is quoted in a message, in bytes. */
inline constexpr size_t kLongestExcerpt = 60;

/** The parts of a text between the separators: one more than there are separators. */
inline std::vector<std::string_view> splitText(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (size_t end = text.find(separator); end != std::string_view::npos;
         end = text.find(separator)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

} // namespace base
