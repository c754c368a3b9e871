#include "plot/LabelText.h"

#include <algorithm>

#include "base/Numbers.h"
#include "base/Text.h"

namespace plot {

namespace {
bool beginsLetter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
}
} // namespace

bool hasIndex(const std::string& text)
{
    return text.find("_{") != std::string::npos;
}

std::string withoutIndex(std::string text)
{
    if (hasIndex(text)) {
        const auto isBrace = [](char c) { return c == '{' || c == '}'; };
        text.erase(std::remove_if(text.begin(), text.end(), isBrace), text.end());
    }
    return text;
}

size_t letterCount(const std::string& text)
{
    const bool isIndexed = hasIndex(text);
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [&](char c) {
        const bool isSign = isIndexed && (c == '_' || c == '{' || c == '}');
        return beginsLetter(c) && !isSign;
    }));
}

std::string shortened(const std::string& text, size_t letters)
{
    if (letterCount(text) <= letters) {
        return text;
    }
    const std::string whole = withoutIndex(text);
    std::vector<size_t> begins;
    for (size_t i = 0; i < whole.size(); ++i) {
        if (beginsLetter(whole[i])) {
            begins.push_back(i);
        }
    }
    const size_t tail = letters / 2;
    const size_t head = letters - tail - 1;
    return whole.substr(0, begins[head]) + "…" + whole.substr(begins[begins.size() - tail]);
}

std::vector<std::string> wrappedIntoLines(const std::string& text, size_t letters)
{
    std::vector<std::string> lines;
    for (const std::string_view part : base::splitText(text, ';')) {
        const std::string more = lines.empty() ? "" : lines.back() + ";" + std::string(part);
        // Leaves room for a semicolon.
        if (!lines.empty() && letterCount(more) < letters) {
            lines.back() = more;
            continue;
        }
        if (!lines.empty()) {
            lines.back() += ";";
        }
        lines.push_back(shortened(std::string(base::trimmed(part)), letters - 1));
    }
    return lines;
}

} // namespace plot
