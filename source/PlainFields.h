#pragma once

#include <QtAlgorithms>
#include <QtGlobal>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

/**
 * The fast path of loading: reads the fields of one line of an input value file straight from its
 * bytes, up to eight digits at a step, without making a text, a list or a copy of anything.
 *
 * It knows only what real files are made of: ASCII text in the skipped fields and, in the others,
 * plain decimal numbers such as -325269 and 49.95. It never judges: every operation returns false
 * for whatever else stands there, good or bad, and the line must then take the general path. A line
 * that was read to its end here has the values that the general path would give.
 *
 * Borrows the bytes of the line.
 */
class PlainFields
{
public:
    /** Bytes that must be readable after the line: eight are read from any position in it. */
    static constexpr size_t kReadableAfter = 8;

    /**
     * @param line points to the first byte of a line, whose line end must be there: it stops
     *             every operation, so that none of them has to know where the bytes end
     */
    explicit PlainFields(const char* line) : mBegin(line), mNext(line) {}

    /** Skips the line end; false if the line continues. */
    bool endLine()
    {
        mNext += *mNext == '\r' ? 1 : 0;
        return *mNext++ == '\n';
    }

    /** Bytes taken so far. */
    size_t taken() const { return static_cast<size_t>(mNext - mBegin); }

    bool skip()
    {
        if (!beginField()) {
            return false;
        }
        int count = kWordBytes;
        while (count == kWordBytes) {
            const quint64 bytes = peek();
            const quint64 stops = zeroBytes(bytes ^ kSeparator * kEachByte) |
                                  zeroBytes(bytes ^ kCommentMark * kEachByte) |
                                  controlBytes(bytes) | (bytes & kTopBits);
            count = bytesBefore(stops);
            mNext += count;
        }
        return true;
    }

    bool read(quint32* value)
    {
        quint64 number = 0;
        if (!beginField() || readDigits(&number) == 0 ||
            number > std::numeric_limits<quint32>::max()) {
            return false;
        }
        *value = static_cast<quint32>(number);
        return true;
    }

    bool read(qint32* value)
    {
        if (!beginField()) {
            return false;
        }
        // A sign counts as a leading zero: finding the end of the digits need not wait for it.
        const quint64 digits = peek() ^ '0' * kEachByte;
        const bool isNegative = (digits & kLowByte) == kMinusDigit;
        quint64 number = 0;
        int count = readWord(isNegative ? digits & ~kLowByte : digits, &number);
        if (count == kWordBytes) {
            count = readDigits(&number, count);
        }
        if (count == (isNegative ? 1 : 0) || number > std::numeric_limits<qint32>::max()) {
            return false;
        }
        const auto magnitude = static_cast<qint32>(number);
        *value = isNegative ? -magnitude : magnitude;
        return true;
    }

    /**
     * Exact: up to 15 digits fit a double, and so does the power of ten, so that the one division
     * rounds as a full conversion does.
     */
    bool read(float* value)
    {
        quint64 digits = 0;
        const int whole = beginField() ? readDigits(&digits) : 0;
        if (whole == 0 || whole > kExactDigits) {
            return false;
        }
        int count = whole;
        if (*mNext == '.') {
            ++mNext;
            count = readDigits(&digits, whole);
            if (count == whole || count > kExactDigits) {
                return false;
            }
        }
        const auto scale = static_cast<double>(kPowersOfTen[static_cast<size_t>(count - whole)]);
        *value = static_cast<float>(static_cast<double>(digits) / scale);
        return true;
    }

private:
    static constexpr quint64 kSeparator = ';';
    static constexpr quint64 kCommentMark = '#';
    static constexpr int kByteBits = 8;
    static constexpr int kWordBytes = 8;
    static constexpr int kMaxDigits = 16;
    static constexpr int kExactDigits = std::numeric_limits<double>::digits10;
    static constexpr quint64 kEachByte = 0x0101010101010101;
    static constexpr quint64 kTopBits = 0x80 * kEachByte;
    static constexpr quint64 kLowByte = 0xFF;
    static constexpr quint64 kMinusDigit = '-' ^ '0';

    static constexpr std::array<quint64, kMaxDigits + 1> kPowersOfTen = [] {
        std::array<quint64, kMaxDigits + 1> powers{1};
        for (size_t exponent = 1; exponent < powers.size(); ++exponent) {
            powers[exponent] = 10 * powers[exponent - 1];
        }
        return powers;
    }();

    /** Steps over the separator in front of every field but the first. */
    bool beginField()
    {
        return std::exchange(mIsFirst, false) || static_cast<quint64>(*mNext++) == kSeparator;
    }

    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

    /**
     * Takes digits one by one, after `count` that are in the number, up to kMaxDigits in all;
     * returns how many are in it then. A longer number then fails at its separator.
     */
    int readDigits(quint64* number, int count = 0)
    {
        for (; count < kMaxDigits && isDigit(*mNext); ++count) {
            *number = 10 * *number + static_cast<quint64>(*mNext++ - '0');
        }
        return count;
    }

    /**
     * Takes the leading digits of the word, all at once, and returns how many. Digit by digit,
     * the varying lengths of the channel values would cost a mispredicted branch each.
     */
    Q_ALWAYS_INLINE int readWord(quint64 digits, quint64* number)
    {
        constexpr quint64 kBeyondNine = 0x76 * kEachByte;
        // A carry can only reach the bytes after the first one that is no digit.
        const int count = bytesBefore(((digits + kBeyondNine) | digits) & kTopBits);
        if (count > 0) {
            *number = joinDigits(digits << kByteBits * (kWordBytes - count));
        }
        mNext += count;
        return count;
    }

    /** The next eight bytes, the first in the lowest byte. */
    quint64 peek() const
    {
        quint64 bytes = 0;
        std::memcpy(&bytes, mNext, sizeof(bytes));
        return bytes;
    }

    /** The top bit of the first zero byte; bits above it are undefined. */
    static quint64 zeroBytes(quint64 bytes) { return (bytes - kEachByte) & ~bytes & kTopBits; }

    /** As zeroBytes() for the bytes below a blank: NUL, line ends, tabs. */
    static quint64 controlBytes(quint64 bytes)
    {
        return (bytes - ' ' * kEachByte) & ~bytes & kTopBits;
    }

    /** How many bytes lie below the lowest of the top bits that are set. */
    static int bytesBefore(quint64 topBits)
    {
        return topBits == 0 ? kWordBytes
                            : static_cast<int>(qCountTrailingZeroBits(topBits)) / kByteBits;
    }

    /** The number whose decimal digits are the eight bytes, the first digit in the lowest. */
    static quint64 joinDigits(quint64 digits)
    {
        constexpr quint64 kPairs = 0x000000FF000000FF;
        digits = digits * 10 + (digits >> 8);
        const quint64 high = (digits & kPairs) * (100 + (1'000'000ULL << 32));
        const quint64 low = ((digits >> 16) & kPairs) * (1 + (10'000ULL << 32));
        return (high + low) >> 32;
    }

    const char* mBegin;
    const char* mNext;
    bool mIsFirst = true;
};
