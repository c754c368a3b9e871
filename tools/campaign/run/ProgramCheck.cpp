#include "run/ProgramCheck.h"

#include <fmt/format.h>

#include <QFileInfo>
#include <QProcess>

#include "ControlFifo.h"
#include "LogWatch.h"
#include "base/WrongInput.h"

namespace run {

namespace {
constexpr int kMaxCheckMilliseconds = 30'000;

/** The last line written by the sandbox itself; empty if there is none. */
QString lastMessage(const QByteArray& errors)
{
    QString message;
    for (const QByteArray& line : errors.split('\n')) {
        message = line.startsWith("vx-sandbox: ") ? QString::fromUtf8(line) : message;
    }
    return message;
}

[[noreturn]] void refuse(const QString& what)
{
    throw base::WrongInput(what.toStdString());
}
} // namespace

void checkPrograms(const SandboxSetup& setup)
{
    QStringList words;
    for (const std::string& fault : setup.mFaults) {
        words << QStringLiteral("--fault") << QString::fromStdString(fault);
    }
    words << QStringLiteral("--") << QString::fromStdString(setup.mSimulator)
          << QStringLiteral("--version");
    const QString sandbox = QString::fromStdString(setup.mSandbox);
    QProcess process;
    process.start(sandbox, words);
    if (!process.waitForStarted()) {
        refuse(QStringLiteral("cannot run %1: %2; expected it beside vx-campaign or in PATH")
                   .arg(sandbox, process.errorString()));
    }
    if (!process.waitForFinished(kMaxCheckMilliseconds)) {
        process.kill();
        process.waitForFinished();
        refuse(sandbox + QStringLiteral(": vx-simulator --version did not end within 30 s"));
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != EXIT_SUCCESS) {
        const QString message = lastMessage(process.readAllStandardError());
        refuse(message.isEmpty() ? QStringLiteral("%1: vx-simulator --version ended with status %2")
                                       .arg(sandbox)
                                       .arg(process.exitCode())
                                 : message);
    }
}

void checkDevice(const std::string& fifo, const std::string& log)
{
    control::ControlFifo commands(QString::fromStdString(fifo));
    if (const QString problem = commands.open(); !problem.isEmpty()) {
        refuse(QStringLiteral("--fifo: ") + problem);
    }
    const QFileInfo file(QString::fromStdString(log));
    if (!file.exists()) {
        refuse(QStringLiteral("--log: %1: there is no such file").arg(file.filePath()));
    }
    if (file.isDir()) {
        refuse(QStringLiteral("--log: %1: is a directory").arg(file.filePath()));
    }
    if (const QString problem = control::LogWatch(file.filePath()).problem(); !problem.isEmpty()) {
        refuse(QStringLiteral("--log: ") + problem);
    }
}

} // namespace run
