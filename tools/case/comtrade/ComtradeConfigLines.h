#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace comtrade {

/**
 * The lines of the configuration part of a COMTRADE recording, taken one by one as fields between
 * commas. Real files end lines in several ways, and may have a blank line after every line.
 *
 * Borrows the text.
 */
class ComtradeConfigLines
{
public:
    using Fields = std::vector<std::string_view>; ///< at least one; trimmed

    /**
     * @param name of the file, for messages @param firstLine number of the text's first line in it
     */
    ComtradeConfigLines(std::string name, std::string_view text, size_t firstLine);

    /**
     * Takes the next line.
     * @param expected content, for messages
     * @throws CaseError at the end
     */
    Fields take(const std::string& expected);

    bool isAtEnd() const { return mNext >= mLines.size(); }

    /** The next line; empty at the end. */
    std::string_view peek() const { return isAtEnd() ? std::string_view() : mLines[mNext]; }

    /** The beginning of the line that was taken last, for a message. */
    std::string_view excerpt() const;

    /** Refuses the line that was taken last: "file:line: expected ..." */
    [[noreturn]] void fail(const std::string& expected) const;

private:
    std::string mName;
    std::vector<std::string_view> mLines;
    size_t mFirstLine;
    size_t mNext;        ///< index of the line that comes next
    size_t mTaken = 0;   ///< index of the line that was taken last
    bool mHasBlankLines; ///< after every line
};

/** The field, or an empty one if the line is shorter. */
std::string_view fieldAt(const ComtradeConfigLines::Fields& fields, size_t index);

/** True when the text begins as a configuration does: its second line counts channels. */
bool looksLikeComtradeConfig(std::string_view text);

} // namespace comtrade
