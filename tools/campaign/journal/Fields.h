#pragma once

#include <QtGlobal>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace journal {

/**
 * The fields of one JSON object of a journal. Nothing is converted: a number that does not fit is
 * an error. All functions throw a CaseError that begins with the name of the field. Borrows the
 * object.
 */
class Fields
{
public:
    using Json = nlohmann::ordered_json;

    explicit Fields(const Json& object);

    bool has(const char* key) const { return mObject.contains(key); }
    const Json& at(const char* key) const;

    std::string text(const char* key) const;
    bool flag(const char* key) const;
    double number(const char* key) const;
    std::vector<std::string> texts(const char* key) const;
    std::map<std::string, std::string> textsByName(const char* key) const;

    /** A whole number that fits Number and is at least `min`. */
    template <typename Number>
    Number whole(const char* key, Number min = std::numeric_limits<Number>::min()) const
    {
        return wholeOf<Number>(at(key), key, min);
    }

    template <typename Number>
    std::optional<Number> optionalWhole(const char* key,
                                        Number min = std::numeric_limits<Number>::min()) const
    {
        return has(key) ? std::make_optional(whole<Number>(key, min)) : std::nullopt;
    }

    /** The same for an element of an array. */
    template <typename Number>
    static Number wholeOf(const Json& value, const char* key, Number min)
    {
        constexpr Number kMax = std::numeric_limits<Number>::max();
        const bool fits = value.is_number_unsigned()
                              ? value.get<quint64>() <= static_cast<quint64>(kMax) &&
                                    (min <= 0 || value.get<quint64>() >= static_cast<quint64>(min))
                              : value.is_number_integer() && std::is_signed_v<Number> &&
                                    value.get<qint64>() >= static_cast<qint64>(min);
        if (!fits) {
            fail(key,
                 "expected a whole number, " + std::to_string(min) + " to " + std::to_string(kMax),
                 value);
        }
        return value.get<Number>();
    }

    [[noreturn]] static void fail(const char* key, const std::string& expected, const Json& value);

private:
    template <typename Value>
    Value valueOf(const char* key, const char* expected) const;

    const Json& mObject;
};

} // namespace journal
