#include "explain/SampleText.h"

#include <fmt/format.h>

namespace explain {

namespace {
constexpr size_t kFieldsBeforeChannels = 2;

std::string fieldName(size_t field)
{
    if (field < kFieldsBeforeChannels) {
        return field == 0 ? "auxiliary word" : "flag word";
    }
    return fmt::format("channel {}", field - kFieldsBeforeChannels);
}

std::string valueText(size_t field, quint32 value)
{
    return field < kFieldsBeforeChannels ? std::to_string(value)
                                         : std::to_string(static_cast<qint32>(value));
}
} // namespace

std::string sampleText(const PlayedFile& file, size_t sample)
{
    return fmt::format("sample {} of {}", sample + 1, file.name());
}

std::string differenceText(const PlayedFile& file, size_t sample, const SampleContent& found)
{
    const SampleContent& expected = file.samples()[sample];
    std::string text;
    for (size_t field = 0; field < found.size(); ++field) {
        if (found[field] != expected[field]) {
            text += fmt::format("{} {} has {} instead of {}", text.empty() ? ":" : ",",
                                fieldName(field), valueText(field, found[field]),
                                valueText(field, expected[field]));
        }
    }
    return sampleText(file, sample) + text;
}

} // namespace explain
