#pragma once

#include <string>

#include "explain/PlayedFile.h"

namespace explain {

/** "sample 361 of dip.csv"; counted from 1. */
std::string sampleText(const PlayedFile& file, size_t sample);

/** sampleText(), and each field in which a record differs from it. */
std::string differenceText(const PlayedFile& file, size_t sample, const SampleContent& found);

} // namespace explain
