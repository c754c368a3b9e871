#include "explain/EventFiles.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/CaseError.h"

namespace explain {

namespace {
/** How late a line may be appended after what it tells of. */
constexpr qint64 kMaxDisorderNs = 1'000'000'000;
} // namespace

/** One file, and how far it was read. */
class EventFiles::Source
{
public:
    explicit Source(const std::string& path) : mFile(path) {}

    std::optional<Event> next()
    {
        const size_t before = mFile.position();
        std::string_view line;
        if (!mFile.takeLine(&line)) {
            return std::nullopt;
        }
        ++mLineNumber;
        std::optional<Event> event = parseEvent(line);
        const bool hasEnd = mFile.position() - before > line.size();
        if (!event && hasEnd) {
            throw base::CaseError(
                fmt::format("{}:{}: expected an event as vx-sandbox --events writes it",
                            mFile.name(), mLineNumber));
        }
        return event;
    }

    qint64 mTimeNs = 0; ///< of the last event
    bool mIsAtEnd = false;

private:
    base::InputFile mFile;
    size_t mLineNumber = 0;
};

EventFiles::EventFiles(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths) {
        mSources.push_back(std::make_unique<Source>(path));
    }
}

EventFiles::~EventFiles() = default;

std::optional<Event> EventFiles::next()
{
    readAhead();
    if (mWaiting.empty()) {
        return std::nullopt;
    }
    Event event = std::move(mWaiting.front());
    mWaiting.erase(mWaiting.begin());
    return event;
}

/** Reads until no file can have an event before the first one that waits. */
void EventFiles::readAhead()
{
    for (const auto& source : mSources) {
        while (!source->mIsAtEnd &&
               (mWaiting.empty() || source->mTimeNs < mWaiting.front().mTimeNs + kMaxDisorderNs)) {
            std::optional<Event> event = source->next();
            if (!event) {
                source->mIsAtEnd = true;
                break;
            }
            source->mTimeNs = std::max(source->mTimeNs, event->mTimeNs);
            const auto place =
                std::upper_bound(mWaiting.begin(), mWaiting.end(), event->mTimeNs,
                                 [](qint64 time, const Event& it) { return time < it.mTimeNs; });
            mWaiting.insert(place, *std::move(event));
        }
    }
}

} // namespace explain
