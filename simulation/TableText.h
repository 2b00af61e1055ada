#pragma once

#include <string>

namespace simulation {

/** A text of a table with each {count*part} replaced by that many parts: {3*x} is xxx. */
inline std::string Expanded(std::string text) {
    for (std::size_t at = 0; (at = text.find('{', at)) != std::string::npos;) {
        const std::size_t star = text.find('*', at);
        const std::size_t end = text.find('}', at);
        std::string all;
        for (int count = std::stoi(text.substr(at + 1)); count > 0; --count) {
            all.append(text, star + 1, end - star - 1);
        }
        text.replace(at, end + 1 - at, all);
    }
    return text;
}

/** The bytes that hexadecimal digits stand for; blanks between them do not count. */
inline std::string FromHex(std::string digits) {
    std::erase(digits, ' ');
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
    }
    return bytes;
}

}  // namespace simulation
