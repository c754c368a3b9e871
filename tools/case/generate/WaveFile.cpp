#include "generate/WaveFile.h"

#include "base/ProgressLine.h"
#include "waveform/ValueFileWriter.h"

namespace generate {

void writeWave(const Wave& wave, std::vector<std::string> comments, base::ResultFile& output)
{
    comments.emplace_back("sample;time in s;auxiliary word;flags;frequency in Hz;channels 0 to 7");
    waveform::ValueFileWriter writer(output);
    writer.writeComments(comments);
    base::ProgressLine progress("writing");
    const Timeline& timeline = wave.timeline();
    const qint64 lineCount = timeline.lineCount();
    for (qint64 sample = 0; sample < lineCount; ++sample) {
        if (sample % kSamplesPerPeriod == 0) {
            progress.show(double(sample) / double(lineCount));
        }
        writer.write({sample, timeline.secondsOf(sample), quint32(sample), 0,
                      timeline.frequencyOf(sample), wave.valuesOf(sample)});
    }
}

} // namespace generate
