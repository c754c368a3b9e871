#include "plot/PlayedBar.h"
#include "base/Numbers.h"

#include <fmt/format.h>

#include <QFileInfo>

namespace plot {

namespace {

/** More parts could not be distinguished in a picture. Later parts are joined to the last one. */
constexpr size_t kMaxParts = 1000;
constexpr size_t kMaxCommands = 100;

std::string effectOf(const std::string& text)
{
    const bool isOnce = !text.empty() && text[0] == 's';
    return isOnce ? fmt::format("play configuration {} once", text.substr(1))
                  : fmt::format("play configuration {} from now on", text);
}
} // namespace

double PlayedBar::secondsOf(qint64 stampNs) const
{
    return static_cast<double>(stampNs - mFirstStampNs) * base::kSecondsPerNanosecond;
}

void PlayedBar::add(const explain::PlayedSegment& segment)
{
    const int configuration = segment.mConfigurations.empty() ? 0 : segment.mConfigurations[0];
    const QString name = QFileInfo(QString::fromStdString(segment.mFile)).completeBaseName();
    const PlayedPart part{secondsOf(segment.mFirstStampNs), secondsOf(segment.mLastStampNs),
                          configuration, fmt::format("{}: {}", configuration, name.toStdString())};
    // A part of the same configuration extends the last one.
    if (!mParts.empty() && (mParts.back().mText == part.mText || mParts.size() == kMaxParts)) {
        mParts.back().mTo = part.mTo;
        return;
    }
    mParts.push_back(part);
}

void PlayedBar::add(const explain::CommandOutcome& command)
{
    addCommand(command.mArrivalNs, command.mText,
               ": " + (command.mProblem.empty() ? effectOf(command.mText) : "rejected"));
}

void PlayedBar::addCommand(const explain::Event& command)
{
    addCommand(command.mTimeNs, command.mText, "");
}

void PlayedBar::addCommand(qint64 arrivalNs, const std::string& text, const std::string& effect)
{
    if (mCommands.size() < kMaxCommands) {
        mCommands.push_back({secondsOf(arrivalNs), fmt::format("command “{}”{}", text, effect)});
    }
}

} // namespace plot
