#pragma once

#include <string>

#include "comtrade/ComtradeSource.h"

/** Finds the parts of a COMTRADE recording in its files. */
namespace comtrade {

/**
 * The file in the same folder with the same name but another suffix, both in any case.
 * @param suffix for example "dat"
 * @return empty if there is none
 */
std::string findBeside(const std::string& path, const std::string& suffix);

/**
 * A recording in two files.
 *
 * @param configPath the .cfg file; it also names the recording
 * @param dataPath the .dat file
 * @param encoding of the texts, as decodeText() takes it
 */
ComtradeParts openComtradePair(const std::string& configPath, const std::string& dataPath,
                               const std::string& encoding);

/** A recording in a single file, with sections. */
ComtradeParts openComtradeSingle(const std::string& path, const std::string& encoding);

/** True when the text begins as a single file does. */
bool looksLikeComtradeSingle(std::string_view text);

} // namespace comtrade
