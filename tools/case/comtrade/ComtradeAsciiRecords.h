#pragma once

#include "comtrade/ComtradeRecords.h"

namespace comtrade {

/** Records in ASCII: one line each, its fields between commas. */
class ComtradeAsciiRecords : public ComtradeRecords
{
public:
    ComtradeAsciiRecords(base::InputFile& file, const ComtradeHeader& header, size_t firstLine);

    void read(size_t maxRecords, ComtradeBlock* block,
              std::vector<std::vector<double>>* columns) override;
    size_t count() const override { return 0; }
    void remarkOn(base::Remarks* remarks) const override;

private:
    class Fields;

    bool takeRecord(std::string_view* line);
    void readRecord(std::string_view line, size_t sample, ComtradeBlock* block,
                    std::vector<std::vector<double>>* columns);
    void readStates(Fields* fields, quint16* states) const;
    [[noreturn]] void fail(const std::string& expected) const;

    base::InputFile& mFile;
    const ComtradeHeader& mHeader;
    size_t mFieldCount;
    double mMissing;        ///< the number that marks a missing value; NaN for none
    size_t mLine;           ///< of the last line taken
    size_t mCutOffLine = 0; ///< of an incomplete last line; 0 for none
    qint64 mLastNumber = 0; ///< of a sample
    bool mHasEnded = false; ///< another section of a single file has begun
};

} // namespace comtrade
