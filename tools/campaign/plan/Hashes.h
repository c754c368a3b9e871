#pragma once

#include <string>

namespace plan {

/** SHA-256 of a file, in hexadecimal digits. Throws CaseError. */
std::string fileHash(const std::string& path);

/** The same of a text. */
std::string textHash(const std::string& text);

} // namespace plan
