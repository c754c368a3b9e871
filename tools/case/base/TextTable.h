#pragma once

#include <string>
#include <vector>

namespace base {

/** Formats texts as a table with aligned columns. Texts are UTF-8. */
class TextTable
{
public:
    /** @param heading of each column; a '>' at its start aligns the column to the right */
    explicit TextTable(const std::vector<std::string>& heading);

    /** Requires: as many texts as there are columns. */
    void add(std::vector<std::string> row) { mRows.push_back(std::move(row)); }

    /** All lines, each with its end; the heading first. */
    std::string text() const;

private:
    std::vector<bool> mIsRight; ///< for each column
    std::vector<std::vector<std::string>> mRows;
};

} // namespace base
