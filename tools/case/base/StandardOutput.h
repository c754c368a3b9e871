#pragma once

#include <string_view>

namespace base {

/**
 * Writes a result, or a part of one, to standard output, without buffering.
 *
 * If the reader has gone, such as `head`, it ends the process silently with SIGPIPE. All other
 * errors are CaseErrors with the system's reason.
 */
void writeToStandardOutput(std::string_view bytes);

} // namespace base
