#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

/** What a device has said: nothing yet, a text in UTF-8, or a number. */
using ValueContent = std::variant<std::monostate, std::string, double>;

/** How what stands in a place of a message becomes a named value. */
struct SValueRule {
    std::string name;
    std::size_t index = 0;  ///< running number in the document
    std::size_t place = 0;  ///< index of CMessagePattern::Places
    bool isNumber = false;
    double scale = 1;
    double offset = 0;
    std::map<std::string, std::string, std::less<>> table{};  ///< applied first; other texts stay as they are

    /** @return nothing when the text is no number, but has to be: the message does not match then */
    std::optional<ValueContent> Apply(std::string_view captured) const;
};

/**
 * A number in decimal digits, with a point, an exponent and blanks around it, whatever the system's locale.
 * @return nothing for any other text
 */
std::optional<double> ParseNumber(std::string_view text);
