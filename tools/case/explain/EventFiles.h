#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/InputFile.h"
#include "explain/Event.h"

namespace explain {

/**
 * The events of one run, from one file or several, in the order of their times. Where others append
 * to a file, its lines may be out of order by a second. Read once, while they grow, in memory that
 * does not depend on their length. A last line that is still being written is left out.
 */
class EventFiles
{
public:
    /** @throws CaseError when a file cannot be read. */
    explicit EventFiles(const std::vector<std::string>& paths);
    EventFiles(const EventFiles&) = delete;
    EventFiles& operator=(const EventFiles&) = delete;
    ~EventFiles();

    /** The run is over: what is in the files is all. */
    void finish() { mIsFinished = true; }

    /**
     * The next event; nothing as long as none is certain to be the next, and at the end.
     * @throws CaseError for a line that is no event
     */
    std::optional<Event> next();

private:
    class Source;

    bool readAhead();
    bool isPastFirst(const Source& source) const;

    std::vector<std::unique_ptr<Source>> mSources;
    std::vector<Event> mWaiting; ///< ascending
    bool mIsFinished = false;
};

} // namespace explain
