#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "OutputFile.h"

namespace sandbox {

/** Writes what happened to the driver's files and the control FIFO, one JSON object a line. */
class EventLog
{
public:
    /** See OutputFile about the arguments. */
    EventLog(const std::string& path, Console& console) : mFile(path, console) {}

    /**
     * A write of `size` bytes whose content is of no interest. `fault` says what went wrong on
     * purpose, if anything.
     */
    void addWrite(std::int64_t realtimeNs, const std::string& file, std::size_t size, bool accepted,
                  const std::string& fault);

    /** A write that was accepted; `data` is shown as unsigned 32-bit words. */
    void addWords(std::int64_t realtimeNs, const std::string& file, const void* data,
                  std::size_t size, const std::string& fault);

    /** A command of the sandbox's own for the control FIFO; `text` without its line end. */
    void addCommand(std::int64_t realtimeNs, const std::string& file, const std::string& text,
                    bool accepted);

    void flush() { mFile.flush(); }
    bool hasFailed() const { return mFile.hasFailed(); }

private:
    void addLine(nlohmann::ordered_json event, const std::string& fault);

    OutputFile mFile;
};

} // namespace sandbox
