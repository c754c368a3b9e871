#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "OutputFile.h"

namespace sandbox {

/** How the program that the sandbox ran has ended. */
struct ProgramEnd
{
    enum class Kind
    {
        Exited,
        Killed,  ///< by a signal that the sandbox did not send
        Stopped, ///< by the sandbox, because the run was over
    };

    Kind mKind;
    int mValue; ///< of Exited the status, of Killed the signal, of Stopped SIGKILL if it took that
};

/**
 * Writes the events of the driver's files, the control FIFO and the end of the run, one JSON object
 * per line. Each line is appended immediately in one piece, because other programs may append
 * lines, too.
 */
class EventLog
{
public:
    /** See OutputFile about the arguments. */
    EventLog(const std::string& path, Console& console) : mFile(path, console) {}

    /**
     * A write of `size` bytes, without its content. `fault` names the planned fault that it
     * triggered; empty for none.
     */
    void addWrite(std::int64_t realtimeNs, const std::string& file, std::size_t size, bool accepted,
                  const std::string& fault);

    /** An accepted write with its content, as unsigned 32-bit words. */
    void addWords(std::int64_t realtimeNs, const std::string& file, const void* data,
                  std::size_t size, const std::string& fault);

    /**
     * A command of --send; `text` without its line end. `problem` says why it was not written;
     * empty when it was.
     */
    void addCommand(std::int64_t realtimeNs, const std::string& file, const std::string& text,
                    const std::string& problem);

    void addProgramEnd(std::int64_t realtimeNs, const ProgramEnd& end);

    /** The last line; closes the file. `unmetFaults` are those that no write has triggered. */
    void addRunEnd(std::int64_t realtimeNs, const std::string& reason,
                   const std::vector<std::string>& unmetFaults = {});

    bool hasFailed() const { return mFile.hasFailed(); }

private:
    void addLine(const nlohmann::ordered_json& event);

    OutputFile mFile;
};

} // namespace sandbox
