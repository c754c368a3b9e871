#include "Seconds.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <stdexcept>

#include "Clocks.h"

namespace sandbox {

namespace {

constexpr double kMaxSeconds = 1e9;

} // namespace

std::int64_t parseSeconds(const std::string& option, const std::string& text)
{
    double seconds = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc{} || rest != end || !(seconds >= 0 && seconds <= kMaxSeconds)) {
        throw std::runtime_error(
            fmt::format("{} takes seconds, 0 to 1000000000, not \"{}\"", option, text));
    }
    return std::llround(seconds * static_cast<double>(kNanosecondsPerSecond));
}

} // namespace sandbox
