#include "comtrade/ComtradeRecords.h"

#include "comtrade/ComtradeAsciiRecords.h"
#include "comtrade/ComtradeBinaryRecords.h"

std::unique_ptr<ComtradeRecords> makeComtradeRecords(InputFile& file, const ComtradeHeader& header,
                                                     size_t firstLine)
{
    if (header.mKind == ComtradeKind::kAscii) {
        return std::make_unique<ComtradeAsciiRecords>(file, header, firstLine);
    }
    return std::make_unique<ComtradeBinaryRecords>(file, header);
}
