#include "textfile/TextWriter.h"

#include <fmt/format.h>

#include <iterator>
#include <utility>

namespace textfile {

TextWriter::TextWriter(std::vector<Column> columns, base::ResultFile& output)
    : mColumns(std::move(columns)), mOutput(output)
{
    std::string heading = "time (s)";
    for (const Column& column : mColumns) {
        heading += fmt::format(",{} ({})", column.mName, column.mUnit);
    }
    mOutput.write(heading + "\n");
}

void TextWriter::write(const waveform::SignalBlock& block)
{
    fmt::memory_buffer line;
    for (size_t i = 0; i < block.size(); ++i) {
        line.clear();
        fmt::format_to(std::back_inserter(line), "{:.9f}", block.mSeconds[i]);
        for (size_t channel = 0; channel < mColumns.size(); ++channel) {
            // Enough digits for 32 bits with any scale.
            fmt::format_to(std::back_inserter(line), ",{:.12g}",
                           block.mValues[channel][i] * mColumns[channel].mFactor);
        }
        line.push_back('\n');
        mOutput.write({line.data(), line.size()});
    }
}

} // namespace textfile
