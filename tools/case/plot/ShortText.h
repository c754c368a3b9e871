#pragma once

#include <string>

/** The text, or as much of its beginning as goes into so many letters, and "…". */
inline std::string shortened(const std::string& text, size_t letters)
{
    size_t count = 0;
    size_t end = 0; // of what leaves room for the dots
    for (size_t i = 0; i < text.size(); ++i) {
        const bool beginsLetter = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80;
        count += beginsLetter ? 1 : 0;
        end = beginsLetter && count == letters ? i : end;
    }
    return count <= letters ? text : text.substr(0, end) + "…";
}
