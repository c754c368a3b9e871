#pragma once

#include <optional>

#include "base/InputFile.h"
#include "textfile/DigitGroups.h"
#include "textfile/TextLayout.h"
#include "waveform/RisingTime.h"
#include "waveform/SignalSource.h"

namespace textfile {

/**
 * A text file of an oscilloscope or a spreadsheet: a heading line, then rows with a time and the
 * values at that time. An empty field is a missing value: the value before is held.
 */
class TextFileSource : public waveform::SignalSource
{
public:
    /** @param encoding of the heading, as for decodeText() */
    TextFileSource(const std::string& path, const std::string& encoding);

    const waveform::SignalDescription& description() const override { return mDescription; }
    bool read(waveform::SignalBlock& block) override;
    double progress() const override { return mFile.progress(); }

private:
    bool takeRow(std::string_view* line);
    void readRow(std::string_view line, size_t index, waveform::SignalBlock* block);
    void finish();
    void refuseGroups() const;
    void readNumber(std::string_view field, size_t column, double* number);
    [[noreturn]] void fail(const std::string& expected) const;

    base::InputFile mFile;
    TextLayout mLayout;
    waveform::SignalDescription mDescription;
    waveform::RisingTime<double> mTime; ///< in the file's unit
    std::vector<double> mLastValues;
    std::optional<DigitGroups> mGroups; ///< set once the layout is known
    size_t mLine = 0;
    size_t mSamples = 0;
    bool mIsFinished = false;
};

/** Why the file is not such a text file; empty if it is one. */
std::string reasonNotTextFile(base::InputFile& file);

} // namespace textfile
