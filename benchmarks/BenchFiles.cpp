#include "BenchFiles.h"

#include <QFile>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace {
constexpr double kRadiansPerSample = 3.14159265358979323846 / 180;
constexpr double kSecondsPerSample = 1.0 / 18000;
constexpr double kAmplitudes[] = {325269000, 325269000, 325269000, 12000,
                                  707107,    707107,    707107,    300};

QByteArray lineOf(int sample)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%d;%.6f;0;0;50", sample, sample * kSecondsPerSample);
    QByteArray line(static_cast<const char*>(text));
    int shift = 0;
    for (const double amplitude : kAmplitudes) {
        const double value = amplitude * std::sin((sample - shift) * kRadiansPerSample);
        line += ';' + QByteArray::number(static_cast<qlonglong>(std::llround(value)));
        shift = (shift + 120) % 480;
    }
    return line + '\n';
}
} // namespace

QString BenchFiles::valueFile(int lines)
{
    QFile file(mDirectory.filePath(QString::number(lines) + QStringLiteral(".csv")));
    if (file.exists()) {
        return file.fileName();
    }
    if (!file.open(QIODevice::WriteOnly)) {
        throw std::runtime_error("cannot write a value file");
    }
    for (int sample = 0; sample < lines; ++sample) {
        file.write(lineOf(sample));
    }
    return file.fileName();
}

QString BenchFiles::textFile(const QString& name, const QByteArray& text)
{
    QFile file(mDirectory.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        throw std::runtime_error("cannot write a text file");
    }
    return file.fileName();
}
