#pragma once

#include <string_view>
#include <vector>

namespace base {

/** How much of a file's text a message quotes, in bytes. */
inline constexpr size_t kLongestExcerpt = 60;

/** The text without blanks, tabs and carriage returns at its ends. */
inline std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r";
    const size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

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

/** The same, each part trimmed. */
inline std::vector<std::string_view> splitFields(std::string_view line, char separator)
{
    std::vector<std::string_view> fields = splitText(line, separator);
    for (std::string_view& field : fields) {
        field = trimmed(field);
    }
    return fields;
}

} // namespace base
