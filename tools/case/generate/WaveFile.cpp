#include "generate/WaveFile.h"

#include <cmath>

#include "base/ProgressLine.h"
#include "waveform/ValueFileWriter.h"

namespace generate {

std::array<qint32, kChannelCount> roundedValues(const LineValues& values)
{
    std::array<qint32, kChannelCount> rounded{};
    for (size_t channel = 0; channel < values.size(); ++channel) {
        rounded[channel] = qint32(std::lround(values[channel]));
    }
    return rounded;
}

void writeLines(LineSource& source, std::vector<std::string> comments, base::ResultFile& output,
                SampleMeter* meter)
{
    comments.emplace_back("sample;time in s;auxiliary word;flags;frequency in Hz;channels 0 to 7");
    waveform::ValueFileWriter writer(output);
    writer.writeComments(comments);
    base::ProgressLine progress("writing");
    const Timeline& timeline = source.timeline();
    const qint64 lineCount = timeline.lineCount();
    for (qint64 line = 0; line < lineCount; ++line) {
        if (line % kSamplesPerPeriod == 0) {
            progress.show(double(line) / double(lineCount));
        }
        const auto values = roundedValues(source.read(line));
        if (meter != nullptr) {
            meter->add(line, values);
        }
        writer.write(
            {line, timeline.secondsOf(line), quint32(line), 0, timeline.frequencyOf(line), values});
    }
}

} // namespace generate
