#include "signal/ImportMark.h"

#include <fmt/format.h>

#include "base/InputFile.h"
#include "base/Numbers.h"

namespace {
constexpr std::string_view kBeforeTime = "begins at ";
constexpr std::string_view kBehindTime = " s of the recording";
} // namespace

std::string importMark(double seconds)
{
    return fmt::format("{}{:.9f}{}", kBeforeTime, seconds, kBehindTime);
}

std::optional<double> importedFrom(const std::string& path)
{
    InputFile file(path);
    std::string_view line;
    while (file.takeLine(&line) && !line.empty() && line[0] == '#') {
        const size_t before = line.find(kBeforeTime);
        const size_t behind = line.rfind(kBehindTime);
        if (before == std::string_view::npos || behind == std::string_view::npos) {
            continue;
        }
        const size_t begin = before + kBeforeTime.size();
        double seconds = 0.0;
        if (begin < behind && parseNumber(line.substr(begin, behind - begin), &seconds)) {
            return seconds;
        }
    }
    return std::nullopt;
}
