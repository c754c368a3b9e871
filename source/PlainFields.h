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
 * that is read here gives the values that the general way would give.
 *
 * Borrows the bytes of the line.
 */
class PlainFields
{
public:
    /** @param line one line without its line end; a '\r' before that is ignored */
    explicit PlainFields(std::string_view line) : mNext(line.data()), mEnd(mNext + line.size())
    {
        mEnd -= !line.empty() && line.back() == '\r' ? 1 : 0;
    }

    /** True when the last field of the line was taken. */
    bool isAtEnd() const { return mAtEnd; }

    bool skip()
    {
        while (mNext != mEnd && *mNext != kSeparator) {
            const bool isPlain = static_cast<signed char>(*mNext) > 0 && *mNext != kCommentMark;
            if (!isPlain) {
                return false;
            }
            ++mNext;
        }
        return endField();
    }

    bool read(quint32* value)
    {
        quint64 number = 0;
        if (readDigits(&number) == 0 || number > std::numeric_limits<quint32>::max()) {
            return false;
        }
        *value = static_cast<quint32>(number);
        return endField();
    }

    bool read(qint32* value)
    {
        const bool isNegative = mNext != mEnd && *mNext == '-';
        mNext += isNegative ? 1 : 0;
        quint64 number = 0;
        if (readDigits(&number) == 0 || number > std::numeric_limits<qint32>::max()) {
            return false;
        }
        const auto magnitude = static_cast<qint32>(number);
        *value = isNegative ? -magnitude : magnitude;
        return endField();
    }

    /**
     * Exact: up to 15 digits fit a double, and so does the power of ten, so that the one division
     * rounds as a full conversion does.
     */
    bool read(float* value)
    {
        quint64 digits = 0;
        const int whole = readDigits(&digits);
        quint64 fraction = 0;
        int places = 0;
        if (mNext != mEnd && *mNext == '.') {
            ++mNext;
            places = readDigits(&fraction);
            if (places == 0) {
                return false;
            }
        }
        if (whole == 0 || whole + places > std::numeric_limits<double>::digits10) {
            return false;
        }
        const quint64 scale = kPowersOfTen[static_cast<size_t>(places)];
        digits = digits * scale + fraction;
        *value = static_cast<float>(static_cast<double>(digits) / static_cast<double>(scale));
        return endField();
    }

private:
    static constexpr char kSeparator = ';';
    static constexpr char kCommentMark = '#';
    static constexpr int kStepDigits = 8;

    /** As many as two steps can need. */
    static constexpr std::array<quint64, 17> kPowersOfTen = [] {
        std::array<quint64, 17> powers{1};
        for (size_t exponent = 1; exponent < powers.size(); ++exponent) {
            powers[exponent] = 10 * powers[exponent - 1];
        }
        return powers;
    }();

    /** Steps over the separator behind a field, or notes that it was the last one. */
    bool endField()
    {
        if (mNext == mEnd) {
            return !std::exchange(mAtEnd, true);
        }
        return *mNext++ == kSeparator;
    }

    /** Takes up to 16 digits; returns how many. A longer number then fails at its separator. */
    int readDigits(quint64* number)
    {
        const int count = readStep(number);
        if (count < kStepDigits) {
            return count;
        }
        quint64 rest = 0;
        const int more = readStep(&rest);
        *number = *number * kPowersOfTen[static_cast<size_t>(more)] + rest;
        return count + more;
    }

    /**
     * Takes up to eight digits at once, one in each byte of a word; returns how many. Digit by
     * digit, the varying lengths of the numbers would cost a mispredicted branch each.
     */
    int readStep(quint64* number)
    {
        constexpr int kByteBits = 8;
        constexpr quint64 kZeroDigits = 0x3030303030303030;
        constexpr quint64 kBeyondNine = 0x7676767676767676;
        constexpr quint64 kTopBits = 0x8080808080808080;
        const auto left = static_cast<size_t>(mEnd - mNext);
        quint64 bytes = 0;
        if (left >= sizeof(bytes)) {
            std::memcpy(&bytes, mNext, sizeof(bytes));
        } else {
            std::memcpy(&bytes, mNext, left);
        }
        bytes ^= kZeroDigits;
        // A carry can only reach the bytes behind the first one that is no digit.
        const quint64 stops = ((bytes + kBeyondNine) | bytes) & kTopBits;
        const int count =
            stops == 0 ? kStepDigits : static_cast<int>(qCountTrailingZeroBits(stops)) / kByteBits;
        if (count > 0) {
            *number = joinDigits(bytes << kByteBits * (kStepDigits - count));
        }
        mNext += count;
        return count;
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
    bool mAtEnd = false;
};
