#pragma once

#include <QString>
#include <QTemporaryDir>

/** The value files that the benchmarks load, in a directory that goes with the object. */
class BenchFiles
{
public:
    /**
     * A value file of that many lines: a 50 Hz wave of eight channels, their values up to ten
     * characters long, about 86 bytes a line.
     */
    QString valueFile(int lines);

    /** A file with the given text; returns its full path. */
    QString textFile(const QString& name, const QByteArray& text);

    QString directory() const { return mDirectory.path(); }

private:
    QTemporaryDir mDirectory;
};
