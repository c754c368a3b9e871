#include <fcntl.h>
#include <unistd.h>

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QVersionNumber>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <new>
#include <optional>

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
 * If the caller has closed standard descriptors, the first pipes and files would get their numbers,
 * and text for standard error would be written into them.
 */
void openStandardDescriptors()
{
    int descriptor = 0; // each open() takes the lowest free number
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

/**
 * Called at the end of the process. Qt's parser ends it with status 0 after printing the help or
 * the version, even if nobody received the text.
 */
void failWithoutOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        std::perror("vx-simulator: standard output");
        std::_Exit(EXIT_FAILURE);
    }
}

/** May end the process. */
void parseCommandLine(QCommandLineParser* parser)
{
    static bool sIsParsing = true;
    std::atexit([] {
        if (sIsParsing) {
            failWithoutOutput();
        }
    });
    parser->process(QCoreApplication::arguments());
    sIsParsing = false;
}

QCommandLineOption fileOption(const char* name, const char* description)
{
    return {QString::fromLatin1(name), translated(description), QStringLiteral("filename")};
}

void declareCommandLine(QCommandLineParser* parser, const QList<QCommandLineOption>& options)
{
    parser->setApplicationDescription(
        translated("Simulation der Hardware für das Varn core-system."));
    parser->addHelpOption();
    parser->addVersionOption();
    parser->addOptions(options);
}

/** Logs at the location of its caller. */
void logStart(const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& location)
{
    logInfo(logger, location, [] {
        return "Starting (Version " + QCoreApplication::applicationVersion().toStdString() +
               ", Build " __DATE__ " " __TIME__ ")";
    });
}

/**
 * Loads and plays; returns only if something could not be loaded or opened. Logs at the location of
 * its caller.
 */
void loadAndPlay(Simulator& simulator, const QString& caseConfig, const log4cxx::LoggerPtr& logger,
                 const log4cxx::spi::LocationInfo& location)
{
    if (!simulator.loadConfigFile(caseConfig)) {
        logError(logger, location,
                 [&] { return "could not load config file: " + local8Bit(caseConfig); });
    } else if (!simulator.loadDataFiles()) {
        logError(logger, location, [] { return "could not load data files."; });
    } else {
        simulator.startEndless();
    }
}
} // namespace

int main(int argc, char** argv)
{
    openStandardDescriptors();
    const QCoreApplication application(argc, argv);
    const VersionInfo version{QVersionNumber::fromString(QStringLiteral(VX_VERSION)),
                              QStringLiteral("yocto"), false, 0};
    QCoreApplication::setApplicationVersion(versionString(version));

    QCommandLineParser parser;
    const QCommandLineOption trackOption = fileOption("track", "track configuration file");
    const QCommandLineOption configOption = fileOption("config", "input configuration file");
    declareCommandLine(&parser, {trackOption, configOption});
    parseCommandLine(&parser);

    const QString trackConfig =
        locateConfigFile(QString::fromLatin1(kTrackConfigName), parser, trackOption, std::cerr);
    if (trackConfig.isNull()) {
        return kConfigMissingExitCode;
    }
    const log4cxx::LoggerPtr logger = initializeTrackSystem(trackConfig.toStdString());
    logStart(logger, LOG4CXX_LOCATION);
    const QString caseConfig =
        locateConfigFile(QString::fromLatin1(kCaseConfigName), parser, configOption, std::cerr);
    if (caseConfig.isNull()) {
        return kConfigMissingExitCode;
    }
    std::optional<Simulator> simulator;
    try {
        simulator.emplace();
        loadAndPlay(*simulator, caseConfig, logger, LOG4CXX_LOCATION);
    } catch (const std::bad_alloc&) {
        simulator.reset(); // frees the loaded data, so that there is memory for the message
        logFatal(logger, LOG4CXX_LOCATION, [] { return "out of memory."; });
    }
    logInfo(logger, LOG4CXX_LOCATION, [] { return "done."; });
    logInfo(logger, LOG4CXX_LOCATION, [] { return "Terminating"; });
    QCoreApplication::exit(0);
    return 0;
}
