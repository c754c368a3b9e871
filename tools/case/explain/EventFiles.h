#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/InputFile.h"
#include "explain/Event.h"

namespace explain {

/**
 * The events of one run, from one or more files, in the order of their times. If several programs
 * append to a file, its lines may be out of order by a second. Files are read once, while they
 * grow, in constant memory. An incomplete last line is left out.
 */
class EventFiles
{
public:
    /** @throws CaseError when a file cannot be read. */
    explicit EventFiles(const std::vector<std::string>& paths);
    EventFiles(const EventFiles&) = delete;
    EventFiles& operator=(const EventFiles&) = delete;
    ~EventFiles();

    /** The run is over: nothing more will be appended to the files. */
    void finish() { mIsFinished = true; }

    /**
     * The next event; no value at the end, or while it is not certain which event is next.
     * @throws CaseError for a line that is not an event
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
