#include "generate/WaveFile.h"

#include "base/ProgressLine.h"
#include "signal/ValueFileWriter.h"

void writeWave(const Wave& wave, std::vector<std::string> comments, ResultFile& output)
{
    comments.emplace_back("sample;time in s;auxiliary word;flags;frequency in Hz;channels 0 to 7");
    ValueFileWriter writer(output);
    writer.writeComments(comments);
    ProgressLine progress("writing");
    for (qint64 sample = 0; sample < wave.sampleCount(); ++sample) {
        if (sample % kSamplesPerPeriod == 0) {
            progress.show(double(sample) / double(wave.sampleCount()));
        }
        writer.write({sample, wave.timeOf(sample), quint32(sample), 0, wave.frequency(),
                      wave.valuesOf(sample)});
    }
}
