#pragma once

#include <optional>

#include "explain/Event.h"
#include "explain/Findings.h"
#include "explain/PlayPlan.h"
#include "explain/RecordingReader.h"

namespace explain {

/**
 * Reads a recording and the events of its run, if there are any, to their ends and lets a Judge
 * explain them.
 *
 * @param eventFiles files of --events of vx-sandbox and vx-control; without any, the commands are
 * concluded from what was played
 * @return true if everything is as expected
 * @throws CaseError if a file cannot be read, or the recording has no sample
 */
bool explainRecording(const PlayPlan& plan, RecordingReader& recording,
                      const std::vector<std::string>& eventFiles, ExplanationOutput& output);

/** The commands that were sent, according to the events. Throws like explainRecording(). */
std::vector<Event> commandsIn(const std::vector<std::string>& eventFiles);

} // namespace explain
