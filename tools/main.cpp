#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <iostream>

#include "Wave.h"
#include "WaveOptions.h"
#include "WaveWriter.h"

namespace {
int fail(const QString& problem)
{
    std::cerr << "vx-wave: " << problem.toStdString() << std::endl;
    return EXIT_FAILURE;
}

int writeToStandardOutput(const Wave& wave, const QString& commandLine)
{
    QFile output;
    const bool isOpen = output.open(STDOUT_FILENO, QIODevice::WriteOnly);
    if (!isOpen || !writeWave(wave, commandLine, output) || !output.flush()) {
        return fail("standard output: " + output.errorString());
    }
    return EXIT_SUCCESS;
}

/** Writes beside the file and renames at the end, so that nobody reads half of it. */
int writeToFile(const Wave& wave, const QString& commandLine, const QString& name)
{
    const QFileInfo info(name);
    if (info.exists() && !info.isFile()) {
        // Renaming over a device node, a pipe or a directory would destroy it.
        return fail(name + ": expected a regular file or a new name");
    }
    QSaveFile output(name);
    const bool isOpen = output.open(QIODevice::WriteOnly);
    if (!isOpen || !writeWave(wave, commandLine, output) || !output.commit()) {
        return fail(name + ": " + output.errorString());
    }
    return EXIT_SUCCESS;
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    WaveOptions options;
    const QString problem = options.read(QCoreApplication::arguments());
    if (!problem.isEmpty()) {
        return fail(problem);
    }
    if (options.isHelpRequested()) {
        std::cout << WaveOptions::helpText().toStdString() << std::flush;
        return EXIT_SUCCESS;
    }
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString commandLine = "vx-wave " + arguments.join(' ');
    const Wave wave(options.parameters());
    return options.outputName().isEmpty() ? writeToStandardOutput(wave, commandLine)
                                          : writeToFile(wave, commandLine, options.outputName());
}
