#include "explain/Explanation.h"

#include "base/CaseError.h"
#include "explain/EventFiles.h"
#include "explain/Judge.h"

namespace explain {

namespace {
/** Gives the judge the available events up to the block with this record; without it, all. */
void feed(EventFiles* events, Judge* judge, std::optional<size_t> untilRecord)
{
    while (!untilRecord || judge->recordsInEvents() <= *untilRecord) {
        const std::optional<Event> event = events->next();
        if (!event) {
            return;
        }
        judge->add(*event);
    }
}
} // namespace

bool explainRecording(const PlayPlan& plan, RecordingReader& recording,
                      const std::vector<std::string>& eventFiles, ExplanationOutput& output)
{
    EventFiles events(eventFiles);
    JudgeOptions options;
    options.mHasEvents = !eventFiles.empty();
    Judge judge(plan, options, output);
    size_t records = 0;
    while (true) {
        const std::vector<SampleRecord>& next = recording.next();
        if (next.empty()) {
            break;
        }
        records += next.size();
        feed(&events, &judge, records);
        judge.add(next.data(), next.size());
    }
    if (records == 0) {
        throw base::CaseError(recording.name() + ": has no samples");
    }
    const bool isComplete = recording.isComplete(); // before its events are read to their end
    events.finish();
    feed(&events, &judge, std::nullopt);
    judge.finish(recording.restBytes(), isComplete);
    return judge.findings().isClean();
}

std::vector<Event> commandsIn(const std::vector<std::string>& eventFiles)
{
    EventFiles events(eventFiles);
    events.finish();
    std::vector<Event> commands;
    while (std::optional<Event> event = events.next()) {
        if (event->mKind == Event::Kind::Command && event->mAccepted) {
            commands.push_back(*std::move(event));
        }
    }
    return commands;
}

} // namespace explain
