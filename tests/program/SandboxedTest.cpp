#include "SandboxedTest.h"

#include <QRegularExpression>
#include <nlohmann/json.hpp>

namespace {
constexpr char kSummaryTitle[] = "What arrived at the driver:\n";
}

std::vector<Event> eventsOf(const std::string& text)
{
    std::vector<Event> events;
    for (const std::string& line : split(text, '\n')) {
        const auto json = nlohmann::json::parse(line);
        if (!json.contains("file")) {
            continue;
        }
        events.push_back({json.at("t"), json.at("file"), json.at("bytes"), json.at("accepted"),
                          json.value("words", std::vector<quint32>{})});
    }
    return events;
}

SandboxedTest::SandboxedTest()
{
    mRunner.writeFile("track.xml", trackConfiguration("simulator.log"));
}

CommandResult SandboxedTest::sandbox(const Words& arguments) const
{
    static const QRegularExpression kFifoLine("vx-sandbox: from another terminal .*\n");
    CommandResult result = mRunner.run(joined({VX_SANDBOX}, arguments));
    result.mErrors = QString::fromStdString(result.mErrors).remove(kFifoLine).toStdString();
    return result;
}

CommandResult SandboxedTest::sandbox(const Words& options, const Words& program) const
{
    return sandbox(joined(joined(options, {"--"}), program));
}

Words SandboxedTest::after(const std::string& script, const Words& program)
{
    return joined({"sh", "-c", script + "\nexec \"$@\"", "sh"}, program);
}

std::string SandboxedTest::trackConfiguration(const std::string& logName)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<log4j:configuration xmlns:log4j="http://jakarta.apache.org/log4j/">
  <appender name="file" class="org.apache.log4j.FileAppender">
    <param name="File" value=")" +
           logName + R"("/>
    <layout class="org.apache.log4j.PatternLayout">
      <param name="ConversionPattern" value="%p %c %m%n"/>
    </layout>
  </appender>
  <root>
    <priority value="info"/>
    <appender-ref ref="file"/>
  </root>
</log4j:configuration>
)";
}

std::string SandboxedTest::log(const std::string& name) const
{
    static const QRegularExpression kBuild(
        "Build [A-Z][a-z]{2} [ \\d]\\d \\d{4} \\d\\d(:\\d\\d){2}\\)");
    static const QRegularExpression kStartTime("start time\\d+");
    QString text = QString::fromStdString(mRunner.readFile(name));
    return text.replace(kBuild, "Build STAMP)")
        .replace(kStartTime, "start timeSECONDS")
        .toStdString();
}

std::string SandboxedTest::programOutput(const CommandResult& result)
{
    return result.mOutput.substr(0, result.mOutput.find(kSummaryTitle));
}

std::map<std::string, std::string> SandboxedTest::summary(const CommandResult& result)
{
    static const QRegularExpression kRow("^  (\\S+(?: \\S+)*)  +(.*)$");
    std::map<std::string, std::string> values;
    for (const std::string& line : split(result.mOutput, '\n')) {
        const QRegularExpressionMatch row = kRow.match(QString::fromStdString(line));
        if (row.hasMatch()) {
            values[row.captured(1).toStdString()] = row.captured(2).toStdString();
        }
    }
    return values;
}
