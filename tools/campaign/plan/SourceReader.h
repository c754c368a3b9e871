#pragma once

#include <string>
#include <vector>

#include "plan/Mistakes.h"
#include "plan/Plan.h"
#include "states/TomlSection.h"

namespace plan {

/** Reads what a value file is made from. Borrows the section and the mistakes, which it adds to. */
class SourceReader
{
public:
    /** All keys that it knows. */
    static std::vector<std::string> keys();

    /** @param folder where relative paths begin */
    SourceReader(const states::TomlSection& section, std::string folder, Mistakes& mistakes)
        : mSection(section), mFolder(std::move(folder)), mMistakes(mistakes)
    {
    }

    /** What it is in spite of mistakes. */
    Source read();

    /** A name for it where the plan gives none: that of the signal or of the file. */
    std::string defaultName() const { return mDefaultName; }

private:
    void findKind();
    void expectOwnKeys();
    void readKind();
    void readSignal();
    void readSettings(const generate::SignalFamily& family);
    void readFile();

    const states::TomlSection& mSection;
    std::string mFolder;
    Mistakes& mMistakes;
    Source mSource;
    std::string mDefaultName;
};

} // namespace plan
