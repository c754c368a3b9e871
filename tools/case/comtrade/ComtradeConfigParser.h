#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/Remarks.h"
#include "comtrade/ComtradeHeader.h"

namespace comtrade {

/**
 * Reads the configuration part of a COMTRADE recording, of any revision. Real files leave out and
 * bend much: what can be understood is taken, and a remark says how. Throws CaseError with the
 * file's name and the line for what cannot.
 *
 * Memory is bounded by the text, whatever numbers stand in it.
 */
class ComtradeConfigParser
{
public:
    /** @param name the file, as messages give it; `firstLine` is the text's place in it. */
    ComtradeConfigParser(std::string name, std::string_view text, size_t firstLine = 1);

    /** Requires: called once. */
    ComtradeHeader parse();

    base::Remarks& remarks() { return mRemarks; }

private:
    using Fields = std::vector<std::string_view>;

    Fields takeLine(const char* expected);
    std::string_view peekLine() const;
    void skipBlankLines();
    [[noreturn]] void fail(const std::string& expected) const;

    void parseStation();
    void parseRevision(std::string_view year);
    void guessRevision();
    void parseChannels();
    size_t channelCount(std::string_view field, char letter);
    ComtradeAnalog parseAnalog(size_t place, size_t count);
    void parseRatio(const Fields& fields, ComtradeAnalog* analog);
    ComtradeStatus parseStatus(size_t place, size_t count);
    int channelNumber(std::string_view field, size_t place);
    double numberOr(std::string_view field, double otherwise) const;
    void parseRates();
    void parseRate(size_t place, size_t count);
    std::string parseTime(const char* what);
    void parseKindLine();
    void parseStampFactor();
    void parseClock();

    std::string mName;
    std::vector<std::string_view> mLines;
    size_t mFirstLine;
    size_t mNext = 0;            ///< index of the line that comes next
    size_t mTaken = 0;           ///< index of the line that was taken last
    bool mHasBlankLines = false; ///< behind every line, which hold nothing
    ComtradeHeader mHeader;
    bool mHasRevision = false;
    base::Remarks mRemarks;
};

/** True when the text begins as a configuration does: its second line counts channels. */
bool looksLikeComtradeConfig(std::string_view text);

} // namespace comtrade
