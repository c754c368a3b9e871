#include "ControlOptions.h"

#include "FixedPaths.h"

namespace control {

namespace {
constexpr char kHelpText[] =
    R"(Usage: vx-control [OPTION]... list
       vx-control [OPTION]... play NAME|NUMBER
       vx-control [OPTION]... once NAME|NUMBER
Tells a running vx-simulator what to play: "play" from now on, "once" through
once and then on as before. "list" shows what there is. NUMBER is that of a
configuration; NAME is that of a value file without its path and suffix, if
only one configuration plays it.

  --config FILE    case configuration (default: where the simulator looks)
  --fifo PATH      control FIFO, for example of a simulator in a sandbox
  --wait SECONDS   stays until the log tells what became of the command
  --log FILE       the log for --wait (default: the service's)
  --events FILE    appends the command to the events of vx-sandbox --events
  -h, --help       shows this text
  -v, --version    shows the version

Exit status: 0 written, with --wait executed; 1 not written, rejected, or
nothing said in time; 2 wrong command line.

Example:
  vx-control --wait 5 once sag-50hz
)";

/** Where the service's logging configuration puts the log. */
constexpr char kServiceLog[] = "/var/log/vx-simulator/vx-simulator.log";

constexpr double kLongestWaitSeconds = 1e6;
} // namespace

ControlOptions::ControlOptions()
    : mHelp(QStringList{QStringLiteral("h"), QStringLiteral("help")}),
      mVersion(QStringList{QStringLiteral("v"), QStringLiteral("version")}),
      mConfig(QStringLiteral("config"), {}, QStringLiteral("FILE")),
      mFifo(QStringLiteral("fifo"), {}, QStringLiteral("PATH"),
            QString::fromLatin1(kControlFifoPath)),
      mWait(QStringLiteral("wait"), {}, QStringLiteral("SECONDS")),
      mLog(QStringLiteral("log"), {}, QStringLiteral("FILE"), QString::fromLatin1(kServiceLog)),
      mEvents(QStringLiteral("events"), {}, QStringLiteral("FILE"))
{
    mParser.addOptions({mHelp, mVersion, mConfig, mFifo, mWait, mLog, mEvents});
}

QString ControlOptions::helpText()
{
    return QString::fromUtf8(kHelpText);
}

QString ControlOptions::read(const QStringList& arguments)
{
    if (!mParser.parse(arguments)) {
        return mParser.errorText();
    }
    if (isHelpRequested() || isVersionRequested()) {
        return {};
    }
    if (mParser.isSet(mWait)) {
        bool isNumber = false;
        mWaitSeconds = mParser.value(mWait).toDouble(&isNumber);
        if (!isNumber || !(mWaitSeconds > 0.0 && mWaitSeconds <= kLongestWaitSeconds)) {
            return QStringLiteral("--wait '%1': expected seconds above 0, for example 5")
                .arg(mParser.value(mWait));
        }
    } else if (mParser.isSet(mLog)) {
        return QStringLiteral("--log is of use with --wait only");
    }
    return problemOfArguments();
}

QString ControlOptions::problemOfArguments() const
{
    const QStringList words = mParser.positionalArguments();
    if (words.isEmpty()) {
        return QStringLiteral("expected list, play or once");
    }
    const bool isList = verb() == QLatin1String("list");
    if (!isList && verb() != QLatin1String("play") && verb() != QLatin1String("once")) {
        return QStringLiteral("'%1': expected list, play or once").arg(verb());
    }
    if (isList && words.size() > 1) {
        return QStringLiteral("'%1': list takes no name").arg(target());
    }
    if (!isList && words.size() != 2) {
        return QStringLiteral("%1: expected one name or number").arg(verb());
    }
    for (const QCommandLineOption& option : {mWait, mEvents}) {
        if (isList && mParser.isSet(option)) {
            return QStringLiteral("--%1 is of use with play and once only")
                .arg(option.names().first());
        }
    }
    if (mParser.isSet(mEvents) && events().isEmpty()) {
        return QStringLiteral("--events: expected the name of a file");
    }
    return {};
}

} // namespace control
