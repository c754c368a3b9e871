#pragma once

#include "base/InputFile.h"
#include "waveform/SignalSource.h"
#include "waveform/ValueLines.h"

namespace waveform {

/**
 * An input value file, read by the program's own class, so that a tool accepts what the program
 * accepts and uses its messages.
 *
 * Times are the simulator's: a step of whole nanoseconds from the frequency of the first line of
 * each block of 360; a frequency that cannot be played leaves the step unchanged.
 */
class ValueFileSource : public SignalSource
{
public:
    explicit ValueFileSource(const std::string& path);

    const SignalDescription& description() const override { return mDescription; }
    bool read(SignalBlock& block) override;
    double progress() const override { return mLines.progress(); }

private:
    double nextTime(float frequency);

    SignalDescription mDescription;
    ValueLines mLines;
    size_t mSamples = 0;
    quint32 mStep;            ///< ns, in force
    quint64 mNanoseconds = 0; ///< time of the last sample
};

/** Why the file is not a value file, by its first line of data; empty if it is one. */
std::string reasonNotValueFile(base::InputFile& file);

} // namespace waveform
