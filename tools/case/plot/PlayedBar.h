#pragma once

#include "explain/Event.h"
#include "explain/Findings.h"
#include "plot/Picture.h"

namespace plot {

/** Collects what was played and which commands were given, as far as a picture can show it. */
class PlayedBar : public explain::ExplanationOutput
{
public:
    /** @param firstStampNs beginning of the picture */
    explicit PlayedBar(qint64 firstStampNs) : mFirstStampNs(firstStampNs) {}

    void add(const explain::PlayedSegment& segment) override;
    void add(const explain::CommandOutcome& command) override;
    void add(const explain::Finding& /*finding*/) override {}
    void add(const explain::Verdict& /*verdict*/) override {}

    /** Adds a command whose outcome is unknown. */
    void addCommand(const explain::Event& command);

    const std::vector<PlayedPart>& parts() const { return mParts; }
    const std::vector<GivenCommand>& commands() const { return mCommands; }

private:
    void addCommand(qint64 arrivalNs, const std::string& text, const std::string& effect);
    double secondsOf(qint64 stampNs) const;

    qint64 mFirstStampNs;
    std::vector<PlayedPart> mParts;
    std::vector<GivenCommand> mCommands;
};

} // namespace plot
