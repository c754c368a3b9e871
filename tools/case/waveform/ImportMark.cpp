#include "waveform/ImportMark.h"

#include <fmt/format.h>

#include "SampleRecord.h"
#include "base/InputFile.h"
#include "base/Numbers.h"

namespace waveform {

namespace {
constexpr std::string_view kBeforeTime = "# begins at ";
constexpr std::string_view kAfterTime = " s of the recording ";
constexpr std::string_view kBeforeStart = ", whose first sample is of ";
constexpr std::string_view kBeforeChannel = "# channel ";
constexpr std::string_view kAfterChannel = ": ";
constexpr std::string_view kBeforeFactor = ", ";
constexpr std::string_view kAfterFactor = " counts for 1 ";

/** Takes the text up to and including the separator; false if there is none. */
bool takeUpTo(std::string_view separator, std::string_view* text, std::string_view* part)
{
    const size_t end = text->find(separator);
    if (end == std::string_view::npos) {
        return false;
    }
    *part = text->substr(0, end);
    text->remove_prefix(end + separator.size());
    return true;
}

bool takePrefix(std::string_view prefix, std::string_view* text)
{
    std::string_view nothing;
    return text->substr(0, prefix.size()) == prefix && takeUpTo(prefix, text, &nothing);
}

bool readOrigin(std::string_view line, ImportMark* mark)
{
    std::string_view seconds;
    if (!takePrefix(kBeforeTime, &line) || !takeUpTo(kAfterTime, &line, &seconds) ||
        !base::parseNumber(seconds, &mark->mSeconds)) {
        return false;
    }
    const size_t end = line.rfind(kBeforeStart);
    mark->mFile = line.substr(0, end);
    mark->mStart = end == std::string_view::npos ? "" : line.substr(end + kBeforeStart.size());
    return true;
}

void readSource(std::string_view line, ImportMark* mark)
{
    std::string_view channel;
    size_t number = 0;
    const size_t unit = line.rfind(kAfterFactor);
    const size_t end = line.rfind(kBeforeFactor, unit);
    if (unit == std::string_view::npos || end == std::string_view::npos) {
        return;
    }
    line = line.substr(0, end);
    if (takePrefix(kBeforeChannel, &line) && takeUpTo(kAfterChannel, &line, &channel) &&
        base::parseNumber(channel, &number) && number < mark->mSources.size()) {
        mark->mSources[number] = line;
    }
}
} // namespace

std::string importComment(const ImportMark& mark)
{
    return fmt::format("begins at {:.9f}{}{}{}", mark.mSeconds, kAfterTime, mark.mFile,
                       mark.mStart.empty() ? "" : std::string(kBeforeStart) + mark.mStart);
}

std::string sourceComment(size_t channel, const std::string& source, double factor,
                          const std::string& unit)
{
    return fmt::format("channel {}{}{}{}{:.10g}{}{}", channel, kAfterChannel, source, kBeforeFactor,
                       factor, kAfterFactor, unit);
}

std::optional<ImportMark> readImportMark(const std::string& path)
{
    base::InputFile file(path);
    ImportMark mark;
    mark.mSources.resize(kChannelCount);
    bool isImport = false;
    std::string_view line;
    while (file.takeLine(&line) && !line.empty() && line[0] == '#') {
        line = base::trimmed(line);
        isImport = readOrigin(line, &mark) || isImport;
        readSource(line, &mark);
    }
    return isImport ? std::optional(mark) : std::nullopt;
}

} // namespace waveform
