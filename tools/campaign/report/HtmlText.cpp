#include "report/HtmlText.h"

#include <fmt/format.h>

#include <algorithm>

namespace report {

std::string htmlText(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            default:
                result += static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? ' ' : c;
        }
    }
    return result;
}

std::string styleOf(Outcome outcome)
{
    std::string name = nameOf(outcome);
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string outcomeMark(Outcome outcome)
{
    return fmt::format(R"(<span class="mark {}"><span>{}</span></span>)", styleOf(outcome),
                       nameOf(outcome));
}

} // namespace report
