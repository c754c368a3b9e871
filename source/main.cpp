#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QVersionNumber>

#include <iostream>
#include <new>

#include "ConfigFileLookup.h"
#include "Simulator.h"
#include "TrackLog.h"
#include "TrackSystem.h"

namespace {
constexpr char kTrackConfigName[] = "vx-simulator.trackconfig.xml";
constexpr int kConfigMissingExitCode = -1;

struct VersionInfo
{
    QVersionNumber number;
    QString builtBy;
    bool modified; ///< built from modified sources
    int external;  ///< 0 means not shown
};

QString versionString(const VersionInfo& version)
{
    QString text = version.number.toString();
    if (version.external != 0) {
        text += QStringLiteral(" (external:%1)").arg(version.external);
    }
    if (!version.builtBy.isEmpty()) {
        text += QStringLiteral(" by ") + version.builtBy;
    }
    if (version.modified) {
        text += QStringLiteral(" modified");
    }
    return text;
}

QString translated(const char* text)
{
    return QCoreApplication::translate("main", text);
}

/**
 * Loads and plays; returns only when something could not be loaded or opened. Reports as its
 * caller, whose location it gets.
 */
void loadAndPlay(const QString& caseConfig, const log4cxx::LoggerPtr& logger,
                 const log4cxx::spi::LocationInfo& location)
{
    Simulator simulator;
    if (!simulator.loadConfigFile(caseConfig)) {
        logError(logger, location,
                 [&] { return "could not load config file: " + local8Bit(caseConfig); });
    } else if (!simulator.loadDataFiles()) {
        logError(logger, location, [] { return "could not load data files."; });
    } else {
        simulator.startEndless();
    }
}

/** Reports as its caller, too. What was loaded is freed before a lack of memory is told. */
void runSimulator(const QString& caseConfig, const log4cxx::LoggerPtr& logger,
                  const log4cxx::spi::LocationInfo& location)
{
    try {
        loadAndPlay(caseConfig, logger, location);
    } catch (const std::bad_alloc&) {
        logFatal(logger, location, [] { return "out of memory."; });
    }
    logInfo(logger, location, [] { return "done."; });
    logInfo(logger, location, [] { return "Terminating"; });
    QCoreApplication::exit(0);
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const VersionInfo version{QVersionNumber(1, 2, 1524), QStringLiteral("yocto"), false, 0};
    QCoreApplication::setApplicationVersion(versionString(version));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        translated("Simulation der Hardware für das Varn core-system."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption trackOption(QStringLiteral("track"),
                                         translated("track configuration file"),
                                         QStringLiteral("filename"));
    const QCommandLineOption configOption(QStringLiteral("config"),
                                          translated("input configuration file"),
                                          QStringLiteral("filename"));
    parser.addOption(trackOption);
    parser.addOption(configOption);
    parser.process(QCoreApplication::arguments());

    const QString trackConfig =
        locateConfigFile(QString::fromLatin1(kTrackConfigName), parser, trackOption, std::cerr);
    if (trackConfig.isNull()) {
        return kConfigMissingExitCode;
    }
    const log4cxx::LoggerPtr logger = initializeTrackSystem(trackConfig.toStdString());
    logInfo(logger, LOG4CXX_LOCATION, [] {
        return "Starting (Version " + QCoreApplication::applicationVersion().toStdString() +
               ", Build " __DATE__ " " __TIME__ ")";
    });

    const QString caseConfig =
        locateConfigFile(QString::fromLatin1(kCaseConfigName), parser, configOption, std::cerr);
    if (caseConfig.isNull()) {
        return kConfigMissingExitCode;
    }
    runSimulator(caseConfig, logger, LOG4CXX_LOCATION);
    return 0;
}
