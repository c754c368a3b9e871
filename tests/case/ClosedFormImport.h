#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "ClosedForm.h"
#include "CommandRunner.h"
#include "Files.h"
#include "ReadSignal.h"
#include "importing/Importer.h"

/** Three voltages in kV and three currents in A, in closed form. */
class ClosedFormSource : public waveform::SignalSource
{
public:
    ClosedFormSource(const ClosedForm& signal, double rate, double seconds)
        : mSignal(signal), mRate(rate), mSamples(static_cast<size_t>(rate * seconds) + 1)
    {
        mDescription.mFileName = "closed.cfg";
        mDescription.mNominalHz = 50.0;
        mDescription.mRates = {{rate, mSamples}};
        for (const char* const name : {"UA", "UB", "UC", "IA", "IB", "IC"}) {
            waveform::ChannelDescription channel;
            channel.mNumber = static_cast<int>(mDescription.mChannels.size()) + 1;
            channel.mName = name;
            channel.mUnit = name[0] == 'U' ? "kV" : "A";
            mDescription.mChannels.push_back(channel);
        }
    }

    const waveform::SignalDescription& description() const override { return mDescription; }
    double progress() const override { return 1.0; }

    bool read(waveform::SignalBlock& block) override
    {
        const size_t count = std::min<size_t>(1000, mSamples - mPosition);
        block.resize(6, count);
        for (size_t i = 0; i < count; ++i) {
            block.mSeconds[i] =
                static_cast<double>(mPosition + i) / mRate + (mPosition > 0 ? mGapSeconds : 0.0);
            for (size_t channel = 0; channel < 6; ++channel) {
                const double counts = mSignal.valueAt(block.mSeconds[i], int(channel % 3));
                block.mValues[channel][i] = counts / (channel < 3 ? 1e6 : 1e3);
            }
        }
        mPosition += count;
        return count > 0;
    }

    waveform::SignalDescription mDescription;
    double mGapSeconds = 0.0; ///< behind the first 1000 samples

private:
    ClosedForm mSignal;
    double mRate;
    size_t mSamples;
    size_t mPosition = 0;
};

/** The report and the lines of an import of it. */
struct Imported
{
    importing::ImportReport mReport;
    std::vector<std::vector<double>> mLines; ///< field by field
};

/** @param seconds how long the recording is */
inline Imported import(const ClosedForm& signal, double seconds,
                       const importing::ImportOptions& options, double rate = 4800.0)
{
    const TestFiles files;
    ClosedFormSource source(signal, rate, seconds);
    base::ResultFile output(files.path("case.csv"));
    Imported imported{importing::importSignal(source, options, output), {}};
    output.commit();
    for (const std::string& text : split(readFile(files.path("case.csv")), '\n')) {
        if (text.front() != '#') {
            std::vector<double>& line = imported.mLines.emplace_back();
            for (const std::string& field : split(text, ';')) {
                line.push_back(std::stod(field));
            }
        }
    }
    return imported;
}

inline std::string importError(const importing::ImportOptions& options)
{
    return errorIfAny([&] { import({}, 0.5, options); });
}
