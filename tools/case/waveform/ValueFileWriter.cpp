#include "waveform/ValueFileWriter.h"

#include <algorithm>
#include <charconv>

namespace waveform {

namespace {
constexpr int kTimeDecimals = 9;

/** Eleven integers of at most 20 characters, a time and a frequency with their separators. */
constexpr size_t kMaxLineBytes = 512;

/** Largest time that is written, so that its text fits into the line. */
constexpr double kLargestSeconds = 1e18;

template <typename... Format>
char* append(char* position, char* end, Format... valueAndFormat)
{
    position = std::to_chars(position, end - 1, valueAndFormat...).ptr; // leaves the separator room
    *position++ = ';';
    return position;
}
} // namespace

void ValueFileWriter::writeComments(const std::vector<std::string>& comments)
{
    for (std::string comment : comments) {
        std::replace_if(
            comment.begin(), comment.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        mOutput.write("# " + comment + "\n");
    }
}

void ValueFileWriter::write(const ValueLine& line)
{
    std::array<char, kMaxLineBytes> text; // NOLINT(cppcoreguidelines-pro-type-member-init)
    char* const end = text.data() + text.size();
    const double seconds = std::clamp(line.mSeconds, -kLargestSeconds, kLargestSeconds);
    char* position = append(text.data(), end, line.mNumber);
    position = append(position, end, seconds, std::chars_format::fixed, kTimeDecimals);
    position = append(position, end, line.mAuxWord);
    position = append(position, end, line.mFlags);
    position = append(position, end, line.mFrequency);
    for (const qint32 value : line.mValues) {
        position = append(position, end, value);
    }
    position[-1] = '\n';
    mOutput.write({text.data(), static_cast<size_t>(position - text.data())});
}

} // namespace waveform
