#pragma once

#include <optional>
#include <string>

/**
 * The comment in an imported value file that tells where it begins in the recording that it was
 * made from, so that the two can be laid over each other.
 */

/** @param seconds from the recording's first sample to the file's first line, as it is played */
std::string importMark(double seconds);

/** What the mark of a value file tells; nothing where there is none before the first sample. */
std::optional<double> importedFrom(const std::string& path);
