#include "journal/Journal.h"

#include <fmt/format.h>

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "journal/StepOrder.h"

namespace journal {

namespace {
/** The first line has all cases and plays of a night. */
constexpr size_t kMaxLineBytes = size_t{64} << 20U;

/** Most lines are shorter. */
constexpr size_t kUsualLineBytes = 4096;

/** With its line end, which the last one may not have; empty at the end of the file. */
std::string_view nextLine(base::InputFile* file)
{
    std::string_view ahead;
    size_t end = std::string_view::npos;
    for (size_t bytes = kUsualLineBytes;
         end == std::string_view::npos && ahead.size() < file->left(); bytes *= 2) {
        if (bytes > kMaxLineBytes) {
            throw base::CaseError(file->name() + ": expected a line end within 64 MiB");
        }
        ahead = file->peek(bytes);
        end = ahead.find('\n');
    }
    const std::string_view line = end == std::string_view::npos ? ahead : ahead.substr(0, end + 1);
    file->skip(line.size());
    return line;
}

/** Reads the steps, one after the other. */
class StepReader
{
public:
    explicit StepReader(const std::string& path) : mFile(path) {}

    Journal readAll()
    {
        while (takeEntry()) {
        }
        return std::move(mJournal);
    }

private:
    /** False where the journal ends or was cut off. */
    bool takeEntry()
    {
        const std::string_view line = nextLine(&mFile);
        const std::optional<Entry> entry = entryOf(line);
        if (!entry) {
            return false;
        }
        const bool isFirst = mJournal.mEntries.empty();
        if (isFirst != std::holds_alternative<NightBegin>(entry->mStep)) {
            fail(isFirst ? "step: the first line is not a night" : "step: a second night");
        }
        try {
            mOrder.add(entry->mStep);
        } catch (const base::CaseError& error) {
            fail(error.what());
        }
        mJournal.mEntries.push_back(*entry);
        mJournal.mWholeBytes = mFile.position();
        return true;
    }

    /** Nothing for a last line that is none: it was cut off. */
    std::optional<Entry> entryOf(std::string_view line) const
    {
        if (line.empty() || line.back() != '\n') {
            return std::nullopt;
        }
        try {
            return parseEntry(line);
        } catch (const base::CaseError& error) {
            if (mFile.left() > 0) {
                fail(error.what());
            }
            return std::nullopt;
        }
    }

    [[noreturn]] void fail(const std::string& what) const
    {
        throw base::CaseError(fmt::format("{}:{}: {}; expected a journal of vx-campaign run",
                                          mFile.name(), mJournal.mEntries.size() + 1, what));
    }

    base::InputFile mFile;
    StepOrder mOrder;
    Journal mJournal;
};
} // namespace

const NightBegin* Journal::night() const
{
    return mEntries.empty() ? nullptr : std::get_if<NightBegin>(&mEntries.front().mStep);
}

Journal readJournal(const std::string& path)
{
    return StepReader(path).readAll();
}

} // namespace journal
