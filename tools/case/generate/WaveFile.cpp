#include "generate/WaveFile.h"

#include "base/ProgressLine.h"
#include "signal/ValueFileWriter.h"

void writeWave(const Wave& wave, std::vector<std::string> comments, ResultFile& output)
{
    comments.emplace_back("sample;time in s;auxiliary word;flags;frequency in Hz;channels 0 to 7");
    ValueFileWriter writer(output);
    writer.writeComments(comments);
    ProgressLine progress("writing");
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
