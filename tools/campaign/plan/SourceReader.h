#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plan/Mistakes.h"
#include "plan/Plan.h"
#include "states/TomlSection.h"

namespace plan {

/** Reads the source of a value file. Borrows the section, and the mistakes that it adds to. */
class SourceReader
{
public:
    /** All keys that it knows. */
    static std::vector<std::string> keys();

    /** @param folder that relative paths start at */
    SourceReader(const states::TomlSection& section, std::string folder, Mistakes& mistakes)
        : mSection(section), mFolder(std::move(folder)), mMistakes(mistakes)
    {
    }

    /** Reads as much as it can in spite of mistakes. */
    Source read();

    /** For a case without a name: that of the signal or of the file. Nothing if it is faulty. */
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
