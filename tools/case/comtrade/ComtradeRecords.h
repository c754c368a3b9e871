#pragma once

#include <QtGlobal>
#include <limits>
#include <memory>
#include <vector>

#include "base/InputFile.h"
#include "base/Remarks.h"
#include "comtrade/ComtradeHeader.h"

namespace comtrade {

/** Consecutive records of a data part, as they stand there. */
struct ComtradeBlock
{
    static constexpr qint64 kNoStamp = std::numeric_limits<qint64>::min();

    std::vector<qint64> mNumbers; ///< of the samples
    std::vector<qint64> mStamps;  ///< in the header's unit; kNoStamp where there is none
    /** The states of a sample, 16 in a word, the first of them in the lowest bit. */
    std::vector<quint16> mStates;

    size_t size() const { return mStamps.size(); }
};

/**
 * Reads the records of a data part. What differs with the kind of data is here and nowhere else.
 * Throws CaseError with file and line or byte for what cannot be read.
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
     * @param columns one for each analog channel, with room for so many numbers; gets them as they
     *        stand, NaN where one is missing
     */
    virtual void read(size_t maxRecords, ComtradeBlock* block,
                      std::vector<std::vector<double>>* columns) = 0;

    /** How many there are; 0 where only reading shows it. */
    virtual size_t count() const = 0;

    /** What was odd, once all has been read. */
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
 * @param file stands at the beginning of the data part, which ends where its part ends; borrowed,
 *        as is the header
 * @param firstLine number of the first line of the data part in the file
 */
std::unique_ptr<ComtradeRecords> makeComtradeRecords(base::InputFile& file,
                                                     const ComtradeHeader& header,
                                                     size_t firstLine);

} // namespace comtrade
