#include "comtrade/ComtradeBinaryRecords.h"

#include <fmt/format.h>

#include <cmath>
#include <cstring>

#include "base/CaseError.h"

namespace comtrade {

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "numbers in a recording are little-endian");

namespace {
constexpr size_t kStampBytes = 8; ///< of sample number and time stamp
constexpr quint32 kNoStamp32 = 0xFFFFFFFF;
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr char kEndMark = 0x1A;

template <typename Number>
Number numberAt(const char* bytes)
{
    Number number{};
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

/** @param step bytes from a value to the same value of the next record */
template <typename Number>
void readColumn(const char* bytes, size_t step, Number missing, size_t count, double* column)
{
    for (size_t i = 0; i < count; ++i) {
        const auto number = numberAt<Number>(bytes + i * step);
        column[i] = number == missing ? kNoNumber : static_cast<double>(number);
    }
}

void readFloatColumn(const char* bytes, size_t step, size_t count, double* column)
{
    // Some writers mark missing values by the lowest float, others by the smallest positive one.
    constexpr float kLowest = std::numeric_limits<float>::lowest();
    constexpr float kSmallest = std::numeric_limits<float>::min();
    for (size_t i = 0; i < count; ++i) {
        const auto number = numberAt<float>(bytes + i * step);
        const bool isThere = std::isfinite(number) && number > kLowest && number != kSmallest;
        column[i] = isThere ? static_cast<double>(number) : kNoNumber;
    }
}

/** In revision 1991 a missing value has all bits set. Some recordings hold unsigned numbers. */
void read1991Column(const ComtradeAnalog& analog, const char* bytes, size_t step, size_t count,
                    double* column)
{
    constexpr double kLargestSigned = 32767.0;
    if (analog.mSmallest >= 0.0 && analog.mLargest > kLargestSigned) {
        readColumn<quint16>(bytes, step, 0xFFFF, count, column);
    } else {
        readColumn<qint16>(bytes, step, -1, count, column);
    }
}

void readColumnOf(const ComtradeHeader& header, size_t channel, const char* bytes, size_t step,
                  size_t count, double* column)
{
    switch (header.mKind) {
        case ComtradeKind::kFloat32:
            readFloatColumn(bytes, step, count, column);
            break;
        case ComtradeKind::kBinary32:
            readColumn(bytes, step, std::numeric_limits<qint32>::min(), count, column);
            break;
        default:
            if (header.mRevision == ComtradeRevision::k1991) {
                read1991Column(header.mAnalogs[channel], bytes, step, count, column);
            } else {
                readColumn(bytes, step, std::numeric_limits<qint16>::min(), count, column);
            }
    }
}
} // namespace

ComtradeBinaryRecords::ComtradeBinaryRecords(base::InputFile& file, const ComtradeHeader& header)
    : mFile(file),
      mHeader(header),
      mValueBytes(header.mKind == ComtradeKind::kBinary ? sizeof(qint16) : sizeof(qint32)),
      mRecordBytes(kStampBytes + header.mAnalogs.size() * mValueBytes +
                   stateWords(header) * sizeof(quint16)),
      mCount(file.left() / mRecordBytes),
      mRest(file.left() % mRecordBytes)
{
    if (mCount == 0) {
        throw base::CaseError(
            fmt::format("{}: byte {}: expected records of {} bytes ({} analog, {} "
                        "status channels), found {} bytes",
                        file.name(), file.position(), mRecordBytes, header.mAnalogs.size(),
                        header.mStatuses.size(), file.left()));
    }
}

void ComtradeBinaryRecords::read(size_t maxRecords, ComtradeBlock* block,
                                 std::vector<std::vector<double>>* columns)
{
    const std::string_view bytes = mFile.peek(maxRecords * mRecordBytes);
    const size_t records = bytes.size() / mRecordBytes;
    block->mNumbers.resize(records);
    block->mStamps.resize(records);
    readStamps(bytes.data(), block);
    for (size_t i = 0; i < columns->size(); ++i) {
        readColumnOf(mHeader, i, bytes.data() + kStampBytes + i * mValueBytes, mRecordBytes,
                     records, (*columns)[i].data());
    }
    readStates(bytes.data(), block);
    mFile.skip(records * mRecordBytes);
    if (records == 0) {
        mEndsInMark = bytes.size() == 1 && bytes[0] == kEndMark;
        mFile.skip(bytes.size());
    }
}

/** Stamps of 32 bits overflow in a long recording. */
void ComtradeBinaryRecords::readStamps(const char* bytes, ComtradeBlock* block)
{
    for (size_t i = 0; i < block->size(); ++i) {
        const char* const record = bytes + i * mRecordBytes;
        block->mNumbers[i] = numberAt<quint32>(record);
        const auto stamp = numberAt<quint32>(record + sizeof(quint32));
        mStamp +=
            stamp == kNoStamp32 ? 0 : static_cast<qint32>(stamp - static_cast<quint32>(mStamp));
        block->mStamps[i] = stamp == kNoStamp32 ? ComtradeBlock::kNoStamp : mStamp;
    }
}

void ComtradeBinaryRecords::readStates(const char* bytes, ComtradeBlock* block) const
{
    const size_t words = stateWords(mHeader);
    const size_t offset = kStampBytes + mHeader.mAnalogs.size() * mValueBytes;
    block->mStates.resize(words * block->size());
    for (size_t i = 0; words > 0 && i < block->size(); ++i) {
        std::memcpy(&block->mStates[i * words], bytes + i * mRecordBytes + offset,
                    words * sizeof(quint16));
    }
}

void ComtradeBinaryRecords::remarkOn(base::Remarks* remarks) const
{
    if (mRest > 0 && !mEndsInMark) {
        remarks->add(fmt::format("{} bytes after the last whole record of {} bytes: left out",
                                 mRest, mRecordBytes));
    }
}

} // namespace comtrade
