#pragma once

#include <memory>
#include <string>

#include "waveform/SignalSource.h"

namespace input {

struct InputOptions
{
    /** Of the texts in a recording; empty: detected. Requires: empty or isEncoding(). */
    std::string mEncoding;
};

/**
 * Opens any file that can be read as a signal. The kind of file is recognised by its content: a
 * value file, a recording of the driver, a COMTRADE recording (either of its two files may be
 * given), a text file with a heading. Throws CaseError; for any other file the message has the
 * reason for each kind.
 */
std::unique_ptr<waveform::SignalSource> openInput(const std::string& path,
                                                  const InputOptions& options);

/**
 * The other file that openInput() reads with this one: the data of a COMTRADE configuration, or the
 * configuration of data; empty for a signal in a single file. Throws CaseError if it is missing.
 */
std::string otherFileOf(const std::string& path);

} // namespace input
