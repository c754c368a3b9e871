#pragma once

#include <string>
#include <vector>

namespace plot {

/** The text; of more letters than that its beginning, "…", and its end, which tells a phase. */
inline std::string shortened(const std::string& text, size_t letters)
{
    std::vector<size_t> begins;
    for (size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80) {
            begins.push_back(i);
        }
    }
    if (begins.size() <= letters) {
        return text;
    }
    const size_t tail = letters / 2;
    const size_t head = letters - tail - 1;
    return text.substr(0, begins[head]) + "…" + text.substr(begins[begins.size() - tail]);
}

} // namespace plot
