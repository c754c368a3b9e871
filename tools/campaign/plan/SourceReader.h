#pragma once

#include <optional>
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

    /** For a case without a name: that of the signal or of the file. None: that is faulty. */
    const std::optional<std::string>& defaultName() const { return mDefaultName; }

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
    std::optional<std::string> mDefaultName;
};

} // namespace plan
