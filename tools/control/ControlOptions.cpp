#include "ControlOptions.h"

#include "FixedPaths.h"

namespace control {

namespace {
constexpr char kHelpText[] =
    R"(Usage: vx-control [OPTION]... list
       vx-control [OPTION]... play NAME|NUMBER
       vx-control [OPTION]... once NAME|NUMBER
Tells a running vx-simulator what to play: "play" plays it from now on, "once"
plays it once and then returns. "list" shows what can be played.
NUMBER is a configuration. NAME is a value file without path and suffix that
only one configuration plays.

  --config FILE    case configuration (default: where the simulator searches)
  --fifo PATH      control FIFO, for example of a simulator in a sandbox
  --wait SECONDS   wait until the log shows the result of the command
  --log FILE       the log for --wait (default: that of the service)
  --events FILE    append the command to the events of vx-sandbox --events
  -h, --help       show this text
  -v, --version    show the version

Exit status: 0 the command was written (with --wait: executed); 1 it was not
written, was rejected, or had no answer in time; 2 wrong command line.

Example:
  vx-control --wait 5 once sag-50hz
)";

/** The log file named in the service's logging configuration. */
constexpr char kServiceLog[] = "/var/log/vx-simulator/vx-simulator.log";

constexpr double kMaxWaitSeconds = 1e6;
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
        if (!isNumber || !(mWaitSeconds > 0.0 && mWaitSeconds <= kMaxWaitSeconds)) {
            return QStringLiteral("--wait '%1': expected seconds, above 0, for example 5")
                .arg(mParser.value(mWait));
        }
    } else if (mParser.isSet(mLog)) {
        return QStringLiteral("--log needs --wait");
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
        return QStringLiteral("'%1': list takes no argument").arg(target());
    }
    if (!isList && words.size() != 2) {
        return QStringLiteral("%1: expected one name or number").arg(verb());
    }
    for (const QCommandLineOption& option : {mWait, mEvents}) {
        if (isList && mParser.isSet(option)) {
            return QStringLiteral("--%1 needs play or once").arg(option.names().first());
        }
    }
    if (mParser.isSet(mEvents) && events().isEmpty()) {
        return QStringLiteral("--events: expected the name of a file");
    }
    return {};
}

} // namespace control
