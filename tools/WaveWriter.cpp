#include "WaveWriter.h"

#include <QByteArray>
#include <charconv>
#include <iterator>

namespace {
constexpr int kTimeDecimals = 9;

/** The shortest text that reads back as the same single precision value. */
QByteArray textOf(float value)
{
    char text[32];
    return {text, int(std::to_chars(std::begin(text), std::end(text), value).ptr - text)};
}

QByteArray headerOf(const QString& commandLine)
{
    return "# made by " + commandLine.simplified().toUtf8() +
           "\n# sample;time in s;auxiliary word;flags;frequency in Hz;channels 0 to 7\n";
}

QByteArray lineOf(const Wave& wave, qint64 sample, const QByteArray& frequency)
{
    const QByteArray number = QByteArray::number(sample);
    QByteArray line = number + ';' + QByteArray::number(wave.timeOf(sample), 'f', kTimeDecimals) +
                      ';' + number + ";0;" + frequency;
    for (const qint32 value : wave.valuesOf(sample)) {
        line += ';' + QByteArray::number(value);
    }
    return line + '\n';
}

bool writeAll(QIODevice& output, const QByteArray& bytes)
{
    return output.write(bytes) == bytes.size();
}
} // namespace

bool writeWave(const Wave& wave, const QString& commandLine, QIODevice& output)
{
    const QByteArray frequency = textOf(wave.frequency());
    if (!writeAll(output, headerOf(commandLine))) {
        return false;
    }
    for (qint64 sample = 0; sample < wave.sampleCount(); ++sample) {
        if (!writeAll(output, lineOf(wave, sample, frequency))) {
            return false;
        }
    }
    return true;
}
