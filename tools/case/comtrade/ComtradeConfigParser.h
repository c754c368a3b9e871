#pragma once

#include <string>
#include <string_view>

#include "base/Remarks.h"
#include "comtrade/ComtradeConfigLines.h"
#include "comtrade/ComtradeHeader.h"

namespace comtrade {

/**
 * Reads the configuration part of a COMTRADE recording of any revision. Real files deviate from the
 * standard in many ways: everything that can be understood is accepted, with a remark. Otherwise it
 * throws CaseError with the file's name and the line.
 *
 * Memory is bounded by the text, whatever numbers it contains.
 */
class ComtradeConfigParser
{
public:
    /**
     * @param name of the file, for messages @param firstLine number of the text's first line in it
     */
    ComtradeConfigParser(std::string name, std::string_view text, size_t firstLine = 1);

    /** Requires: called once. */
    ComtradeHeader parse();

    base::Remarks& remarks() { return mRemarks; }

private:
    using Fields = ComtradeConfigLines::Fields;

    void parseStation();
    void parseRevision(std::string_view year);
    void guessRevision();
    void parseChannels();
    size_t channelCount(std::string_view field, char letter) const;
    ComtradeAnalog parseAnalog(size_t index, size_t count);
    void parseScaling(const Fields& fields, const std::string& what, ComtradeAnalog* analog);
    void parseRatio(const Fields& fields, waveform::ChannelDescription* channel);
    waveform::StatusChannel parseStatus(size_t index, size_t count);
    void parseNominalFrequency();
    void parseRates();
    void parseRate(size_t index, size_t count);
    std::string parseTime(const char* what);
    void parseKindLine();
    void parseStampFactor();
    void parseClock();

    ComtradeConfigLines mLines;
    ComtradeHeader mHeader;
    bool mHasRevision = false;
    base::Remarks mRemarks;
};

} // namespace comtrade
