#include "plot/Gnuplot.h"

#include <QProcess>

#include "base/CaseError.h"

namespace plot {

namespace {
constexpr int kForever = -1; ///< ms

struct ProgramRun
{
    bool mIsStarted = false;
    bool mIsGood = false; ///< ended by itself with status 0
    std::string mOutput;
    std::string mMessages; ///< and the reason if it failed to start or was killed
};

/** QProcess reads the output while it still writes the input, so neither side blocks. */
ProgramRun runProgram(const QString& name, const std::string& input)
{
    QProcess process;
    process.start(name, QStringList());
    ProgramRun run;
    run.mIsStarted = process.waitForStarted(kForever);
    if (!run.mIsStarted) {
        run.mMessages = process.errorString().toStdString();
        return run;
    }
    process.write(input.data(), static_cast<qint64>(input.size()));
    process.closeWriteChannel();
    process.waitForFinished(kForever);
    const bool isByItself = process.exitStatus() == QProcess::NormalExit;
    run.mIsGood = isByItself && process.exitCode() == 0;
    run.mOutput = process.readAllStandardOutput().toStdString();
    run.mMessages = QString::fromUtf8(process.readAllStandardError()).trimmed().toStdString();
    run.mMessages += isByItself ? "" : "ended by a signal";
    return run;
}
} // namespace

std::string runGnuplot(const std::string& script)
{
    const ProgramRun run = runProgram("gnuplot", script);
    if (!run.mIsStarted) {
        throw base::CaseError("gnuplot draws the picture, and it does not start (" + run.mMessages +
                              "): install the package gnuplot-nox");
    }
    if (!run.mIsGood) {
        throw base::CaseError("gnuplot: " + run.mMessages);
    }
    return run.mOutput;
}

void expectFont()
{
    const ProgramRun run = runProgram("fc-list", "");
    // If the fonts cannot be listed, there may still be one.
    if (run.mIsGood && run.mOutput.empty()) {
        throw base::CaseError(
            "the texts of a PNG picture need a font, and there is none: install the package "
            "fonts-dejavu-core");
    }
}

} // namespace plot
