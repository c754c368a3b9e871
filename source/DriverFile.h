#pragma once

#include <QFile>

/**
 * A file of the simulated ADC driver: a QFile that gives up if the driver interrupts every attempt
 * to write, which QFile would repeat endlessly. To be opened unbuffered.
 */
class DriverFile : public QFile
{
public:
    explicit DriverFile(const QString& name) : QFile(name) {}

protected:
    /** Writes the rest after a short write, as QFile does. Bytes written, -1 when there are none.
     */
    qint64 writeData(const char* data, qint64 size) override;
};
