#include <QCoreApplication>

#include <iostream>

#include "CaseConfiguration.h"
#include "ConfigFileLookup.h"
#include "ControlOptions.h"
#include "Delivery.h"
#include "Messages.h"
#include "OutputCheck.h"
#include "PlayList.h"
#include "PlayRequest.h"

namespace {
/** The path of the case configuration; a null text, after a message, if there is none. */
QString caseConfigName(const control::ControlOptions& options)
{
    if (!options.caseConfig().isEmpty()) {
        return options.caseConfig();
    }
    const QString name = searchConfigFile(QString::fromLatin1(kCaseConfigName), std::cerr);
    if (name.isNull()) {
        std::cerr << "or name it with --config" << std::endl;
    }
    return name;
}

/** The message, if --events names another file of this run; empty if it does not. */
QString conflictOfFiles(const control::ControlOptions& options, const QString& caseConfig)
{
    files::OutputCheck check;
    check.addInput("the case configuration", QFile::encodeName(caseConfig).toStdString());
    check.addInput("the control FIFO", QFile::encodeName(options.fifo()).toStdString());
    check.addInput("the log", QFile::encodeName(options.log()).toStdString());
    check.addOutput("--events", QFile::encodeName(options.events()).toStdString());
    return QFile::decodeName(check.conflict().c_str());
}

/** Reads the case configuration; false, after a message, on failure. */
bool readCases(const QString& name, configuration::CaseConfiguration* cases)
{
    if (!cases->read(name, configuration::CaseConfiguration::Rejected::Stop)) {
        control::fail(QString::fromLocal8Bit(cases->fileError().c_str()));
        return false;
    }
    for (const std::string& error : cases->lineErrors()) {
        control::warn(QString::fromLocal8Bit(error.c_str()) +
                      QStringLiteral("; the simulator stops reading here"));
    }
    return true;
}

int run(const control::ControlOptions& options)
{
    const QString caseConfig = caseConfigName(options);
    if (caseConfig.isNull()) {
        return control::kNotDone;
    }
    const QString conflict = conflictOfFiles(options, caseConfig);
    if (!conflict.isEmpty()) {
        return control::fail(conflict, control::kCommandLineAtFault);
    }
    configuration::CaseConfiguration cases;
    if (!readCases(caseConfig, &cases)) {
        return control::kNotDone;
    }
    const control::PlayList list(cases);
    if (options.verb() == QLatin1String("list")) {
        const QStringList lines = list.lines();
        return control::print(lines.isEmpty() ? QString() : lines.join('\n') + '\n');
    }
    control::PlayRequest request;
    request.mOnce = options.verb() == QLatin1String("once");
    const QString problem = list.find(options.target(), &request.mNumber);
    return problem.isEmpty() ? control::Delivery(options, request).run() : control::fail(problem);
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    configuration::CaseConfiguration::keepLogSilent();
    control::ControlOptions options;
    const QString problem = options.read(QCoreApplication::arguments());
    if (!problem.isEmpty()) {
        return control::fail(problem, control::kCommandLineAtFault);
    }
    if (options.isHelpRequested()) {
        return control::print(control::ControlOptions::helpText());
    }
    if (options.isVersionRequested()) {
        return control::print(QStringLiteral("vx-control " VX_VERSION "\n"));
    }
    return run(options);
}
