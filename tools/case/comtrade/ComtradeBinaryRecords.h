#pragma once

#include "comtrade/ComtradeRecords.h"

namespace comtrade {

/** Records of BINARY, BINARY32 and FLOAT32: number, stamp, values, words of states. */
class ComtradeBinaryRecords : public ComtradeRecords
{
public:
    ComtradeBinaryRecords(base::InputFile& file, const ComtradeHeader& header);

    void read(size_t maxRecords, ComtradeBlock* block,
              std::vector<std::vector<double>>* columns) override;
    size_t count() const override { return mCount; }
    void remarkOn(base::Remarks* remarks) const override;

private:
    void readStamps(const char* bytes, ComtradeBlock* block);
    void readStates(const char* bytes, ComtradeBlock* block) const;

    base::InputFile& mFile;
    const ComtradeHeader& mHeader;
    size_t mValueBytes;
    size_t mRecordBytes;
    size_t mCount;
    size_t mRest;             ///< bytes after the last whole record
    bool mEndsInMark = false; ///< the rest is an end mark
    qint64 mStamp = 0;        ///< the last one, its overflows included
};

} // namespace comtrade
