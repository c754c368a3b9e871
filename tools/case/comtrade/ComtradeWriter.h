#pragma once

#include <string>
#include <vector>

#include "base/ResultFile.h"
#include "comtrade/ComtradeHeader.h"
#include "waveform/SignalSource.h"

namespace comtrade {

/**
 * Writes COMTRADE 2013 with BINARY32 data. The numbers are those of the channels, unconverted; the
 * header's factors convert them into values. -2147483648 reads back as a missing value.
 */

/** The configuration part, with the line ends that the standard requires. */
std::string comtradeConfigText(const ComtradeHeader& header);

/** Size of a record in bytes. */
size_t comtradeRecordBytes(const ComtradeHeader& header);

/**
 * Writes the records of a block, numbered from its first sample on.
 * Requires: the block's values are whole numbers of 32 bits, its channels those of the header.
 */
void writeComtradeRecords(const ComtradeHeader& header, const waveform::SignalBlock& block,
                          base::ResultFile& output);

} // namespace comtrade
