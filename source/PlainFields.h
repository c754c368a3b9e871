#pragma once

#include <QtAlgorithms>
#include <QtGlobal>
#include <array>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

/**
 * The fast road of loading: reads the fields of one line of an input value file straight from its
 * bytes, up to eight digits at a step, without making a text, a list or a copy of anything.
 *
 * It knows only what real files are made of: ASCII text in the skipped fields and, in the others,
 * plain decimal numbers such as -325269 and 49.95. It never judges: every operation returns false
 * for whatever else stands there, good or bad, and the line must then go the general way. A line
 * that was read to its end here has the values that the general way would give.
 *
 * Borrows the bytes of the line.
 */
class PlainFields
{
public:
    /**
     * What must be readable behind the line, so that eight bytes can be looked at from any place
     * in it. What these bytes are does not matter: a line read beyond its end is not at its end.
     */
    static constexpr size_t kReadableBehindLine = 8;

    /** @param line one line without its line end; a '\r' before that is ignored */
    explicit PlainFields(std::string_view line) : mNext(line.data()), mEnd(mNext + line.size())
    {
        mEnd -= !line.empty() && line.back() == '\r' ? 1 : 0;
    }

    /** True when all of the line was taken. */
    bool isAtEnd() const { return mNext == mEnd; }

    bool skip()
    {
        if (!beginField()) {
            return false;
        }
        int count = kWordBytes;
        while (count == kWordBytes && mNext < mEnd) {
            const quint64 bytes = peek();
            const quint64 stops = zeroBytes(bytes ^ kSeparator * kEachByte) |
                                  zeroBytes(bytes ^ kCommentMark * kEachByte) | zeroBytes(bytes) |
                                  (bytes & kTopBits);
            count = bytesBefore(stops);
            mNext += count;
        }
        return true;
    }

    bool read(quint32* value)
    {
        quint64 number = 0;
        if (!beginField() || readDigits(peekDigits(), &number) == 0 ||
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
        const quint64 bytes = peekDigits();
        const bool isNegative = (bytes & kLowByte) == kMinusDigit;
        quint64 number = 0;
        const int count = readDigits(isNegative ? bytes & ~kLowByte : bytes, &number);
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
        const int whole = beginField() ? readDigits(peekDigits(), &digits) : 0;
        if (whole == 0 || whole > std::numeric_limits<double>::digits10) {
            return false;
        }
        if (mNext >= mEnd || *mNext != '.') {
            *value = static_cast<float>(static_cast<double>(digits));
            return true;
        }
        ++mNext;
        quint64 fraction = 0;
        const int places = readDigits(peekDigits(), &fraction);
        if (places == 0 || whole + places > std::numeric_limits<double>::digits10) {
            return false;
        }
        const quint64 scale = kPowersOfTen[static_cast<size_t>(places)];
        digits = digits * scale + fraction;
        *value = static_cast<float>(static_cast<double>(digits) / static_cast<double>(scale));
        return true;
    }

private:
    static constexpr quint64 kSeparator = ';';
    static constexpr quint64 kCommentMark = '#';
    static constexpr int kByteBits = 8;
    static constexpr int kWordBytes = 8;
    static constexpr int kMostDigits = 16;
    static constexpr quint64 kEachByte = 0x0101010101010101;
    static constexpr quint64 kTopBits = 0x80 * kEachByte;
    static constexpr quint64 kLowByte = 0xFF;
    static constexpr quint64 kMinusDigit = '-' ^ '0';

    static constexpr std::array<quint64, kMostDigits + 1> kPowersOfTen = [] {
        std::array<quint64, kMostDigits + 1> powers{1};
        for (size_t exponent = 1; exponent < powers.size(); ++exponent) {
            powers[exponent] = 10 * powers[exponent - 1];
        }
        return powers;
    }();

    /** Steps over the separator in front of every field but the first. */
    bool beginField()
    {
        if (std::exchange(mIsFirst, false)) {
            return true;
        }
        return mNext < mEnd && static_cast<quint64>(*mNext++) == kSeparator;
    }
    /**
     * Takes up to 16 digits, the first of which are in the word; returns how many. A longer
     * number then fails at its separator.
     */
    Q_ALWAYS_INLINE int readDigits(quint64 digits, quint64* number)
    {
        int count = readWord(digits, number);
        if (count < kWordBytes) {
            return count;
        }
        while (mNext < mEnd && isDigit(*mNext) && count < kMostDigits) {
            *number = 10 * *number + static_cast<quint64>(*mNext - '0');
            ++mNext;
            ++count;
        }
        return count;
    }

    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

    /**
     * Takes the leading digits of the word, all at once, and returns how many. Digit by digit,
     * the varying lengths of the numbers would cost a mispredicted branch each.
     */
    Q_ALWAYS_INLINE int readWord(quint64 digits, quint64* number)
    {
        constexpr quint64 kBeyondNine = 0x76 * kEachByte;
        // A carry can only reach the bytes behind the first one that is no digit.
        const int count = bytesBefore(((digits + kBeyondNine) | digits) & kTopBits);
        if (count > 0) {
            *number = joinDigits(digits << kByteBits * (kWordBytes - count));
        }
        mNext += count;
        return count;
    }

    /** The next eight bytes as the digits that they stand for; others become more than nine. */
    Q_ALWAYS_INLINE quint64 peekDigits() const { return peek() ^ '0' * kEachByte; }

    /** The next eight bytes, the first in the lowest place. */
    quint64 peek() const
    {
        quint64 bytes = 0;
        std::memcpy(&bytes, mNext, sizeof(bytes));
        return bytes;
    }

    /** The top bit of the first zero byte; what is set above it means nothing. */
    static quint64 zeroBytes(quint64 bytes) { return (bytes - kEachByte) & ~bytes & kTopBits; }

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

    const char* mNext;
    const char* mEnd;
    bool mIsFirst = true;
};
