#pragma once

#include <string>
#include <vector>

#include "base/ResultFile.h"
#include "comtrade/ComtradeHeader.h"
#include "waveform/SignalSource.h"

namespace comtrade {

/**
 * Writes COMTRADE of 2013 with BINARY32 data. Its numbers are those of the channels as they stand;
 * the header's factors make values of them. -2147483648 reads back as a missing value.
 */

/** The configuration part; its lines end as the standard asks for. */
std::string comtradeConfigText(const ComtradeHeader& header);

/** Bytes that a record has. */
size_t comtradeRecordBytes(const ComtradeHeader& header);

/**
 * Writes the records of a block, numbered from its first sample on.
 * Requires: the block's values are whole numbers of 32 bits, its channels those of the header.
 */
void writeComtradeRecords(const ComtradeHeader& header, const waveform::SignalBlock& block,
                          base::ResultFile& output);

} // namespace comtrade
