#pragma once

#include <optional>

#include "explain/Event.h"
#include "explain/Findings.h"
#include "explain/PlayPlan.h"
#include "explain/RecordingReader.h"

namespace explain {

/**
 * Reads a recording and the events of its run, if there are any, to the end and lets a Judge say
 * what they are.
 *
 * @param eventFiles what vx-sandbox and vx-control wrote with --events; none: what was commanded is
 *        taken from what was played
 * @return whether all is as it should be
 * @throws CaseError when a file cannot be read, or the recording has no sample
 */
bool explainRecording(const PlayPlan& plan, RecordingReader& recording,
                      const std::vector<std::string>& eventFiles, ExplanationOutput& output);

/** The commands that were sent, by the events alone. Throws as explainRecording() does. */
std::vector<Event> commandsIn(const std::vector<std::string>& eventFiles);

} // namespace explain
