#include "run/Environment.h"

#include <sys/timex.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSysInfo>
#include <QTimeZone>
#include <thread>

namespace run {

namespace {
constexpr int kMaxVersionMilliseconds = 5000;

std::string versionOf(const std::string& program)
{
    QProcess process;
    process.start(QString::fromStdString(program), {QStringLiteral("--version")});
    if (!process.waitForFinished(kMaxVersionMilliseconds)) {
        return "unknown: " + process.errorString().toStdString();
    }
    return process.readAllStandardOutput().trimmed().toStdString();
}

std::string clockText()
{
    timex state{};
    const bool isKnown = ntp_adjtime(&state) >= 0;
    if (!isKnown || (state.status & STA_UNSYNC) != 0) {
        return "not synchronized";
    }
    return "synchronized, within " + std::to_string(state.maxerror) + " us";
}
} // namespace

Environment environmentNow(const std::string& version)
{
    return {{"host", QSysInfo::machineHostName().toStdString()},
            {"system", QSysInfo::prettyProductName().toStdString()},
            {"kernel", QSysInfo::kernelVersion().toStdString()},
            {"processor", QSysInfo::currentCpuArchitecture().toStdString() + ", " +
                              std::to_string(std::thread::hardware_concurrency()) + " cores"},
            {"clock", clockText()},
            {"time zone", QTimeZone::systemTimeZoneId().toStdString()},
            {"vx-campaign", version}};
}

Environment environmentNow(const std::string& version, const std::string& sandbox,
                           const std::string& simulator)
{
    Environment environment = environmentNow(version);
    environment["vx-sandbox"] = versionOf(sandbox);
    environment["vx-simulator"] = versionOf(simulator);
    return environment;
}

std::string programBeside(const std::string& name)
{
    const QString own = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    const QFileInfo beside(QFileInfo(own).path() + '/' + QString::fromStdString(name));
    return beside.isExecutable() && beside.isFile() ? beside.filePath().toStdString() : name;
}

} // namespace run
