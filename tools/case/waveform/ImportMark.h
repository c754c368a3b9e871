#pragma once

#include <optional>
#include <string>
#include <vector>

namespace waveform {

/**
 * What the comments of an imported value file say about its recording, so that both can be drawn
 * over each other.
 */
struct ImportMark
{
    std::string mFile;                 ///< the recording, as given
    std::string mStart;                ///< time of its first sample, as text; may be empty
    double mSeconds = 0.0;             ///< from there to the first line of the file
    std::vector<std::string> mSources; ///< of each channel of the device; empty for none
};

/** The comment with everything except the sources. */
std::string importComment(const ImportMark& mark);

/** The comment with the source of a channel. */
std::string sourceComment(size_t channel, const std::string& source, double factor,
                          const std::string& unit);

/** Reads the comments before the first sample; no value if the file is not an import. */
std::optional<ImportMark> readImportMark(const std::string& path);

} // namespace waveform
