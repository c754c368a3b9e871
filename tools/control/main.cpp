#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTextStream>
#include <QThread>

#include <cmath>
#include <iostream>
#include <sstream>

#include "CaseConfiguration.h"
#include "ConfigFileLookup.h"
#include "ControlFifo.h"
#include "ControlOptions.h"
#include "LogWatch.h"
#include "PlayList.h"
#include "PlayRequest.h"

namespace {
constexpr int kNotDone = 1;
constexpr int kCommandLineAtFault = 2;
constexpr unsigned long kBetweenLooksMilliseconds = 50;
constexpr double kMillisecondsPerSecond = 1000.0;

int fail(const QString& problem, int status = kNotDone)
{
    std::cerr << "vx-control: " << problem.toLocal8Bit().constData() << std::endl;
    return status;
}

int print(const QString& text)
{
    std::cout << text.toLocal8Bit().constData() << std::flush;
    return EXIT_SUCCESS;
}

/** Reads what the simulator can play; false after a message. */
bool readCases(const control::ControlOptions& options, configuration::CaseConfiguration* cases)
{
    QString name = options.caseConfig();
    if (name.isEmpty()) {
        name = searchConfigFile(QString::fromLatin1(kCaseConfigName), std::cerr);
        if (name.isNull()) {
            std::cerr << "or name it with --config" << std::endl;
            return false;
        }
    }
    if (!cases->read(name, configuration::CaseConfiguration::Rejected::Stop)) {
        fail(QString::fromLocal8Bit(cases->fileError().c_str()));
        return false;
    }
    for (const std::string& error : cases->lineErrors()) {
        fail(QString::fromLocal8Bit(error.c_str()) +
             QStringLiteral("; the simulator reads no further"));
    }
    return true;
}

/** Stays until the log tells what became of the request. */
int awaitVerdict(control::LogWatch* log, const control::PlayRequest& request, double seconds)
{
    const QDeadlineTimer deadline(std::llround(seconds * kMillisecondsPerSecond));
    for (;;) {
        const bool isLastLook = deadline.hasExpired();
        for (QByteArray line = log->nextLine(); !line.isEmpty(); line = log->nextLine()) {
            const control::RequestVerdict verdict = control::verdictOf(line, request);
            if (verdict != control::RequestVerdict::Unknown) {
                print(QString::fromLocal8Bit(line));
                return verdict == control::RequestVerdict::Executed ? EXIT_SUCCESS : kNotDone;
            }
        }
        if (isLastLook) {
            return fail(QStringLiteral("written, but the log said nothing of it in %1 s (a "
                                       "command is taken when the case in progress has ended)")
                            .arg(seconds));
        }
        QThread::msleep(kBetweenLooksMilliseconds);
    }
}

int play(const control::ControlOptions& options, const control::PlayRequest& request)
{
    const bool waits = options.waitSeconds() > 0.0;
    control::LogWatch log(waits ? options.log() : QString());
    if (!log.problem().isEmpty()) {
        return fail(log.problem());
    }
    const QString problem = control::sendCommand(options.fifo(), request.line());
    if (!problem.isEmpty()) {
        return fail(problem);
    }
    return waits ? awaitVerdict(&log, request, options.waitSeconds()) : EXIT_SUCCESS;
}

int run(const control::ControlOptions& options)
{
    configuration::CaseConfiguration cases;
    if (!readCases(options, &cases)) {
        return kNotDone;
    }
    const control::PlayList list(cases);
    if (options.verb() == QLatin1String("list")) {
        const QStringList lines = list.lines();
        return print(lines.isEmpty() ? QString() : lines.join('\n') + '\n');
    }
    control::PlayRequest request;
    request.mOnce = options.verb() == QLatin1String("once");
    const QString problem = list.find(options.target(), &request.mNumber);
    return problem.isEmpty() ? play(options, request) : fail(problem);
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    configuration::CaseConfiguration::keepLogSilent();
    control::ControlOptions options;
    const QString problem = options.read(QCoreApplication::arguments());
    if (!problem.isEmpty()) {
        return fail(problem, kCommandLineAtFault);
    }
    if (options.isHelpRequested()) {
        return print(control::ControlOptions::helpText());
    }
    if (options.isVersionRequested()) {
        return print(QStringLiteral("vx-control " VX_VERSION "\n"));
    }
    return run(options);
}
