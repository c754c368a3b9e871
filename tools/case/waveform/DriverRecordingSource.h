#pragma once

#include "base/InputFile.h"
#include "waveform/RisingTime.h"
#include "waveform/SignalSource.h"

namespace waveform {

/**
 * The sample stream of the driver, as vx-sandbox records it: sample records of 48 bytes. Times are
 * those of the stamps.
 */
class DriverRecordingSource : public SignalSource
{
public:
    explicit DriverRecordingSource(const std::string& path);

    const SignalDescription& description() const override { return mDescription; }
    bool read(SignalBlock& block) override;
    double progress() const override { return mFile.progress(); }

    /** Time stamp of the first record; 0 if there is none. */
    qint64 firstStampNs() const { return mFirstStampNs; }

private:
    void finish();

    base::InputFile mFile;
    SignalDescription mDescription;
    RisingTime<qint64> mTime; ///< in ns
    size_t mSamples = 0;
    qint64 mFirstStampNs = 0;
};

/**
 * Why the file is not a recording of the driver, which is a whole number of records with rising
 * stamps (the first ones are checked); empty if it is one.
 */
std::string reasonNotDriverRecording(base::InputFile& file);

} // namespace waveform
