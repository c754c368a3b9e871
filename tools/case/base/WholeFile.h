#pragma once

#include <string>

namespace base {

/** The text of a small file. Throws CaseError if it cannot be read or has more bytes. */
std::string readWholeFile(const std::string& path, size_t maxBytes);

} // namespace base
