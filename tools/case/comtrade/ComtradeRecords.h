#pragma once

#include <QtGlobal>
#include <limits>
#include <memory>
#include <vector>

#include "base/InputFile.h"
#include "base/Remarks.h"
#include "comtrade/ComtradeHeader.h"

namespace comtrade {

/** Consecutive records of a data part, unconverted. */
struct ComtradeBlock
{
    static constexpr qint64 kNoStamp = std::numeric_limits<qint64>::min();

    std::vector<qint64> mNumbers; ///< of the samples
    std::vector<qint64> mStamps;  ///< in the header's unit; kNoStamp for none
    /** The states of a sample, 16 in a word, the first of them in the lowest bit. */
    std::vector<quint16> mStates;

    size_t size() const { return mStamps.size(); }
};

/**
 * Reads the records of a data part. Everything that depends on the kind of data is here. Throws
 * CaseError with file and line or byte if something cannot be read.
 */
class ComtradeRecords
{
public:
    ComtradeRecords() = default;
    ComtradeRecords(const ComtradeRecords&) = delete;
    ComtradeRecords& operator=(const ComtradeRecords&) = delete;
    virtual ~ComtradeRecords() = default;

    /**
     * Reads the next records, at most `maxRecords`; none at the end.
     * @param columns one for each analog channel, with room for this number of values; gets them
     * unconverted, NaN for a missing one
     */
    virtual void read(size_t maxRecords, ComtradeBlock* block,
                      std::vector<std::vector<double>>* columns) = 0;

    /** Number of records; 0 if it is known only after reading. */
    virtual size_t count() const = 0;

    /** Adds remarks on oddities; to be called at the end. */
    virtual void remarkOn(base::Remarks* remarks) const = 0;
};

/** Status channels in each word of a binary record. */
inline constexpr size_t kStatesInWord = 16;

/** Words of 16 states that one sample has. */
inline size_t stateWords(const ComtradeHeader& header)
{
    return (header.mStatuses.size() + kStatesInWord - 1) / kStatesInWord;
}

/**
 * The reader for the header's kind of data.
 *
 * @param file at the beginning of the data part, which ends where its part ends; borrowed, like the
 * header
 * @param firstLine number of the first line of the data part in the file
 */
std::unique_ptr<ComtradeRecords> makeComtradeRecords(base::InputFile& file,
                                                     const ComtradeHeader& header,
                                                     size_t firstLine);

} // namespace comtrade
