#pragma once

#include <string_view>

namespace base {

/**
 * Writes a result, or a part of one, to standard output; nothing is kept back.
 *
 * When the reader has gone, as `head` does, it ends the process with SIGPIPE: quietly. Throws
 * CaseError with the system's reason for everything else that keeps a byte from being written.
 */
void writeToStandardOutput(std::string_view bytes);

} // namespace base
