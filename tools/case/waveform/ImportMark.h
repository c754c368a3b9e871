#pragma once

#include <optional>
#include <string>
#include <vector>

namespace waveform {

/**
 * What the comments of an imported value file say of the recording that it was made from, so
 * that the two can be laid over each other.
 */
struct ImportMark
{
    std::string mFile;                 ///< the recording, as it was named
    std::string mStart;                ///< time of its first sample, as text; may be empty
    double mSeconds = 0.0;             ///< from there to the file's first line, as it is played
    std::vector<std::string> mSources; ///< of each channel of the device; empty for nothing
};

/** The comment with all but the sources. */
std::string importComment(const ImportMark& mark);

/** The comment that names what a channel was made from. */
std::string sourceComment(size_t channel, const std::string& source, double factor,
                          const std::string& unit);

/** What the comments before the first sample say; nothing where the file is no import. */
std::optional<ImportMark> readImportMark(const std::string& path);

} // namespace waveform
