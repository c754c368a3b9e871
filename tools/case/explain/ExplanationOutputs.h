#pragma once

#include <string>

#include "base/ResultFile.h"
#include "explain/Findings.h"

/** The explanation for people: a table with the commands and findings between its rows. */
class ExplanationText : public ExplanationOutput
{
public:
    /** @param output borrowed; @param fileWidth characters of the longest value file's name */
    ExplanationText(ResultFile& output, size_t fileWidth);

    void add(const PlayedStretch& stretch) override;
    void add(const CommandOutcome& command) override;
    void add(const Finding& finding) override;
    void add(const Verdict& verdict) override;

private:
    ResultFile& mOutput;
    size_t mFileWidth;
};

/** The explanation for programs: one JSON object a line, which tells its "kind". */
class ExplanationJson : public ExplanationOutput
{
public:
    /** @param output borrowed */
    explicit ExplanationJson(ResultFile& output) : mOutput(output) {}

    void add(const PlayedStretch& stretch) override;
    void add(const CommandOutcome& command) override;
    void add(const Finding& finding) override;
    void add(const Verdict& verdict) override;

private:
    ResultFile& mOutput;
};

/** A time stamp as seconds with nine decimals. */
std::string stampText(qint64 stampNs);
