#include "journal/Fields.h"

#include "base/CaseError.h"

namespace journal {

namespace {
/** Max length of a value in a message. */
constexpr size_t kMaxShownBytes = 40;
} // namespace

Fields::Fields(const Json& object) : mObject(object)
{
    if (!object.is_object()) {
        throw base::CaseError("no JSON object");
    }
}

const Fields::Json& Fields::at(const char* key) const
{
    const auto field = mObject.find(key);
    if (field == mObject.end()) {
        throw base::CaseError(std::string(key) + ": missing");
    }
    return *field;
}

void Fields::fail(const char* key, const std::string& expected, const Json& value)
{
    std::string shown = value.dump(-1, ' ', true, Json::error_handler_t::replace);
    if (shown.size() > kMaxShownBytes) {
        shown.resize(kMaxShownBytes);
        shown += "...";
    }
    throw base::CaseError(std::string(key) + ": " + expected + ", found " + shown);
}

/** @param expected for the message: what the value should be */
template <typename Value>
Value Fields::valueOf(const char* key, const char* expected) const
{
    const Json& value = at(key);
    try {
        return value.get<Value>();
    } catch (const Json::exception&) {
        fail(key, expected, value);
    }
}

std::string Fields::text(const char* key) const
{
    return valueOf<std::string>(key, "expected a text");
}

bool Fields::flag(const char* key) const
{
    return valueOf<bool>(key, "expected true or false");
}

double Fields::number(const char* key) const
{
    return valueOf<double>(key, "expected a number");
}

std::vector<std::string> Fields::texts(const char* key) const
{
    return valueOf<std::vector<std::string>>(key, "expected texts");
}

std::map<std::string, std::string> Fields::textsByName(const char* key) const
{
    return valueOf<std::map<std::string, std::string>>(key, "expected an object of texts");
}

} // namespace journal
