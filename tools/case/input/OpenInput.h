#pragma once

#include <memory>
#include <string>

#include "waveform/SignalSource.h"

namespace input {

struct InputOptions
{
    /** Of the texts in a recording; empty: it is detected. Requires: empty or isEncoding(). */
    std::string mEncoding;
};

/**
 * Opens whatever can be read as a signal. What a file is, is found by its content: a value file,
 * a recording of the driver, a COMTRADE recording (of which either of two files may be named), a
 * text file with a heading. Throws CaseError; for a file that is none of them the message says
 * for each kind why not.
 */
std::unique_ptr<waveform::SignalSource> openInput(const std::string& path,
                                                  const InputOptions& options);

/**
 * The other file that openInput() reads with this one: the data of a COMTRADE configuration, or
 * the configuration of data; empty for a signal in a single file. Throws CaseError where that is
 * missing.
 */
std::string otherFileOf(const std::string& path);

} // namespace input
