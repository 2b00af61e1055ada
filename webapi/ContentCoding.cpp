#include "webapi/ContentCoding.h"

#include <algorithm>
#include <optional>
#include <string>

namespace {

/**
 * Removes the part before the separator from the front of the text, and returns it without the blanks around
 * it.
 */
std::string_view TakePart(std::string_view& text, char separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    part.remove_prefix(std::min(part.find_first_not_of(" \t"), part.size()));
    return part.substr(0, part.find_last_not_of(" \t") + 1);
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/** "q=0.5" in thousandths; 1000 for an empty text, 0 for a malformed one (RFC 9110, 12.4.2). */
int WeightOf(std::string_view text) {
    if (text.empty()) {
        return 1000;
    }
    if (text.size() < 3 || text.size() > 7 || LowerCase(text.substr(0, 2)) != "q=" ||
        (text.size() > 3 && text[3] != '.')) {
        return 0;
    }
    std::string digits(1, text[2]);
    digits.append(text.substr(std::min<std::size_t>(4, text.size()))).resize(4, '0');
    if (digits.find_first_not_of("0123456789") != std::string::npos) {
        return 0;
    }
    const int weight = std::stoi(digits);
    return weight > 1000 ? 0 : weight;
}

}  // namespace

bool TakesGzip(std::string_view accepted) {
    std::optional<int> gzip;
    std::optional<int> any;
    int plain = 0;
    while (!accepted.empty()) {
        std::string_view weight = TakePart(accepted, ',');
        const std::string coding = LowerCase(TakePart(weight, ';'));
        if (coding == "gzip" || coding == "x-gzip") {
            gzip = WeightOf(TakePart(weight, ';'));
        } else if (coding == "*") {
            any = WeightOf(TakePart(weight, ';'));
        } else if (coding == "identity") {
            plain = WeightOf(TakePart(weight, ';'));
        }
    }
    const int taken = gzip.value_or(any.value_or(0));
    return taken > 0 && taken >= plain;
}
