#include "journal/Journal.h"

#include <fmt/format.h>

#include "base/CaseError.h"
#include "base/InputFile.h"

namespace journal {

namespace {
/** Takes one line; false where the journal ends or was cut off. */
bool takeEntry(base::InputFile* file, Journal* journal)
{
    std::string_view text;
    const size_t begin = file->position();
    if (!file->takeLine(&text)) {
        return false;
    }
    const bool hasEnd = file->position() - begin > text.size();
    std::optional<Entry> entry = hasEnd ? parseEntry(text) : std::nullopt;
    const bool isFirst = journal->mEntries.empty();
    if (entry && isFirst == std::holds_alternative<NightBegin>(entry->mStep)) {
        journal->mEntries.push_back(*std::move(entry));
        journal->mWholeBytes = file->position();
        return true;
    }
    if (entry || file->left() > 0) {
        throw base::CaseError(
            fmt::format("{}:{}: expected a step of a night, as vx-campaign run "
                        "writes it",
                        file->name(), journal->mEntries.size() + 1));
    }
    return false;
}
} // namespace

const NightBegin* Journal::night() const
{
    return mEntries.empty() ? nullptr : std::get_if<NightBegin>(&mEntries.front().mStep);
}

Journal readJournal(const std::string& path)
{
    base::InputFile file(path);
    Journal journal;
    while (takeEntry(&file, &journal)) {
    }
    return journal;
}

} // namespace journal
