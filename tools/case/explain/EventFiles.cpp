#include "explain/EventFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "base/CaseError.h"

namespace explain {

namespace {
/** Max delay with which the line of an event is appended. */
constexpr qint64 kMaxDisorderNs = 1'000'000'000;

/** The events' clock. */
qint64 realtimeNs()
{
    using namespace std::chrono;
    return duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count();
}
} // namespace

/** One file with its read position. */
class EventFiles::Source
{
public:
    explicit Source(const std::string& path) : mFile(path) {}

    /** The next event; no value if none is written yet. */
    std::optional<Event> next(bool isFinished)
    {
        const qint64 nowNs = realtimeNs();
        std::optional<Event> event = read(isFinished);
        if (!event) {
            mFile.continueAt(mFile.position());
            event = read(isFinished);
        }
        mEventNs = std::max(mEventNs, event ? event->mTimeNs : 0);
        mTimeNs = event ? mEventNs : std::max(mEventNs, nowNs);
        return event;
    }

    qint64 mTimeNs = 0; ///< of the last event, or of the last attempt to read one

private:
    std::optional<Event> read(bool isFinished)
    {
        const size_t before = mFile.position();
        std::string_view line;
        if (!mFile.takeLine(&line)) {
            return std::nullopt;
        }
        const bool hasEnd = mFile.position() - before > line.size();
        if (!hasEnd && !isFinished) {
            mFile.continueAt(before);
            return std::nullopt;
        }
        ++mLineNumber;
        std::optional<Event> event = parseEvent(line);
        if (!event && hasEnd) {
            throw base::CaseError(
                fmt::format("{}:{}: expected an event as vx-sandbox --events writes it",
                            mFile.name(), mLineNumber));
        }
        return event;
    }

    base::InputFile mFile;
    qint64 mEventNs = 0;
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
    if (!readAhead() || mWaiting.empty()) {
        return std::nullopt;
    }
    Event event = std::move(mWaiting.front());
    mWaiting.erase(mWaiting.begin());
    return event;
}

/**
 * Reads until no file can have an earlier event than the first waiting one; false if one still can.
 */
bool EventFiles::readAhead()
{
    for (const auto& source : mSources) {
        while (!isPastFirst(*source)) {
            std::optional<Event> event = source->next(mIsFinished);
            if (!event) {
                break;
            }
            const auto place =
                std::upper_bound(mWaiting.begin(), mWaiting.end(), event->mTimeNs,
                                 [](qint64 time, const Event& it) { return time < it.mTimeNs; });
            mWaiting.insert(place, *std::move(event));
        }
    }
    return mIsFinished || std::all_of(mSources.begin(), mSources.end(),
                                      [this](const auto& it) { return isPastFirst(*it); });
}

bool EventFiles::isPastFirst(const Source& source) const
{
    return !mWaiting.empty() && source.mTimeNs >= mWaiting.front().mTimeNs + kMaxDisorderNs;
}

} // namespace explain
