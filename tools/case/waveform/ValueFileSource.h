#pragma once

#include <memory>

#include "base/InputFile.h"
#include "waveform/SignalSource.h"

namespace waveform {

/**
 * An input value file, read by the program's own class so that a tool takes what the program
 * takes and refuses it in the same words.
 *
 * Times are the simulator's: a step of whole nanoseconds from the frequency of the first line of
 * each block of 360, where a frequency that cannot be played leaves the step as it is.
 */
class ValueFileSource : public SignalSource
{
public:
    explicit ValueFileSource(const std::string& path);
    ~ValueFileSource() override;

    const SignalDescription& description() const override { return mDescription; }
    bool read(SignalBlock& block) override;
    double progress() const override;

private:
    class Lines;

    double stamp(float frequency);

    SignalDescription mDescription;
    std::unique_ptr<Lines> mLines;
    size_t mSamples = 0;
    quint32 mStep;            ///< ns, in force
    quint64 mNanoseconds = 0; ///< time of the last sample
};

/** Why the file is no value file, by its first line that holds data; empty when it is one. */
std::string whyNoValueFile(base::InputFile& file);

} // namespace waveform
