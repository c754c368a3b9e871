#include "comtrade/ComtradeRecords.h"

#include "comtrade/ComtradeAsciiRecords.h"
#include "comtrade/ComtradeBinaryRecords.h"

namespace comtrade {

std::unique_ptr<ComtradeRecords> makeComtradeRecords(base::InputFile& file,
                                                     const ComtradeHeader& header, size_t firstLine)
{
    if (header.mKind == ComtradeKind::kAscii) {
        return std::make_unique<ComtradeAsciiRecords>(file, header, firstLine);
    }
    return std::make_unique<ComtradeBinaryRecords>(file, header);
}

} // namespace comtrade
