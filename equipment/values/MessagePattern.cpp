#include "equipment/values/MessagePattern.h"

#include "equipment/values/MessageCutter.h"
#include "platform/Utf8.h"

#include <algorithm>

namespace {

constexpr std::size_t kLongestPlaceName = 40;

/** The longest number keeps all its digits as a double. */
constexpr std::size_t kLongestNumber = 6;

struct SProblemText {
    const char* english;
    const char* chinese;
};

SProblemText TextOf(EnPatternProblem kind) {
    switch (kind) {
        case EnPatternProblem::Empty:
            return {"it has nothing to compare beside the end of the message. Type what the device sends.",
                    "除消息结尾外没有可比较的内容。请输入设备发送的内容。"};
        case EnPatternProblem::TooLong:
            return {"it is longer than a message can be, 4096 bytes. Make it shorter.",
                    "超过了消息的最大长度 4096 字节。请缩短。"};
        case EnPatternProblem::Brace:
            return {"a brace has no other half. Write {{ or }} for a brace that the device sends.",
                    "大括号不成对。设备发送的大括号请写成 {{ 或 }}。"};
        case EnPatternProblem::PlaceName:
            return {"the name of a place is 1 to 40 characters, without blanks, braces, colons and commas.",
                    "位置名称应为 1 到 40 个字符，不含空格、大括号、冒号和逗号。"};
        case EnPatternProblem::PlaceTwice:
            return {"two places have the same name. Rename one of them.",
                    "两个位置同名。请修改其中一个名称。"};
        case EnPatternProblem::PlacesTogether:
            return {"two places stand together. Put the text between them that the device sends there.",
                    "两个位置相邻。请在它们之间写上设备发送的文字。"};
        case EnPatternProblem::HexDigits:
            return {"write each byte as two digits (A5), any byte as ??, and a place as {name:bytes}.",
                    "每个字节写成两位十六进制数（A5），任意字节写成 ??，位置写成 {名称:字节数}。"};
        case EnPatternProblem::PlaceLength:
            return {
                "a number in it has 1 to 6 bytes: {name:2}, with le for little-endian, with s for signed.",
                "数字的长度应为 1 到 6 字节：{名称:2}，小端加 le，有符号加 s。"};
        case EnPatternProblem::RestNotLast:
            break;
    }
    return {"{name:*} takes all that is left, so nothing can stand behind it. Move it to the end.",
            "{名称:*} 取走剩余的全部内容，其后不能再有内容。请将其移到末尾。"};
}

int DigitOf(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::size_t CharactersOf(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

bool IsPlaceName(std::string_view name) {
    return !name.empty() && CharactersOf(name) <= kLongestPlaceName &&
           std::none_of(name.begin(), name.end(), [](char byte) {
               const auto value = static_cast<unsigned char>(byte);
               return value <= 0x20 || value == 0x7F ||
                      std::string_view("{}:,").find(byte) != std::string_view::npos;
           });
}

std::string HexText(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += digits[value >> 4U];
        text += digits[value & 0x0FU];
    }
    return text;
}

/** The pattern for a sentence; of a long one only the beginning. */
std::string Quotation(std::string_view pattern) {
    constexpr std::size_t most = 200;
    if (pattern.size() <= most) {
        return std::string(pattern);
    }
    std::string_view rest = pattern;
    while (pattern.size() - rest.size() < most) {
        rest.remove_prefix(std::max<std::size_t>(Utf8SequenceLength(rest), 1));
    }
    return std::string(pattern.substr(0, pattern.size() - rest.size())) + "...";
}

}  // namespace

CPatternProblem::CPatternProblem(EnPatternProblem kind, std::string_view pattern)
    : CConfigProblem("The pattern \"" + Quotation(pattern) + "\" can't be used: " + TextOf(kind).english,
                     "模式“" + Quotation(pattern) + "”无法使用：" + TextOf(kind).chinese),
      m_kind(kind) {}

void CMessagePattern::AddName(std::string_view name, std::string_view pattern) {
    if (!IsPlaceName(name)) {
        throw CPatternProblem(EnPatternProblem::PlaceName, pattern);
    }
    if (std::find(m_names.begin(), m_names.end(), name) != m_names.end()) {
        throw CPatternProblem(EnPatternProblem::PlaceTwice, pattern);
    }
    m_names.emplace_back(name);
}

CMessagePattern CMessagePattern::FromText(std::string_view pattern, std::string_view terminator) {
    if (pattern.size() > kLongestMessage + terminator.size()) {
        throw CPatternProblem(EnPatternProblem::TooLong, pattern);
    }
    CMessagePattern made;
    std::string literal;
    const auto endLiteral = [&] {
        (made.m_places.empty() ? made.m_begin : made.m_places.back().behind.bytes) = std::move(literal);
        literal.clear();
    };
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const char character = pattern[at];
        if (character != '{' && character != '}') {
            literal += character;
            continue;
        }
        if (at + 1 < pattern.size() && pattern[at + 1] == character) {
            literal += character;
            ++at;
            continue;
        }
        const std::size_t end = pattern.find_first_of("{}", at + 1);
        if (character == '}' || end == std::string_view::npos || pattern[end] == '{') {
            throw CPatternProblem(EnPatternProblem::Brace, pattern);
        }
        if (literal.empty() && !made.m_places.empty()) {
            throw CPatternProblem(EnPatternProblem::PlacesTogether, pattern);
        }
        endLiteral();
        const std::string_view name = pattern.substr(at + 1, end - at - 1);
        if (!name.empty()) {
            made.AddName(name, pattern);
        }
        made.m_places.push_back({!name.empty(), {}});
        at = end;
    }
    endLiteral();
    made.DropTerminator(terminator);
    if (made.m_begin.empty() && made.m_places.empty()) {
        throw CPatternProblem(EnPatternProblem::Empty, pattern);
    }
    for (SPlace& place : made.m_places) {
        place.behind = MakeLiteral(std::move(place.behind.bytes));
    }
    return made;
}

CMessagePattern CMessagePattern::FromHex(std::string_view pattern, std::string_view terminator) {
    CMessagePattern made;
    made.m_isHex = true;
    std::size_t bytes = 0;
    for (std::size_t at = 0; at < pattern.size();) {
        if (pattern[at] == ' ') {
            ++at;
            continue;
        }
        if (!made.m_pieces.empty() && made.m_pieces.back().kind == SPiece::EnKind::Rest) {
            throw CPatternProblem(EnPatternProblem::RestNotLast, pattern);
        }
        if (pattern[at] == '{') {
            const std::size_t end = pattern.find('}', at);
            if (end == std::string_view::npos) {
                throw CPatternProblem(EnPatternProblem::Brace, pattern);
            }
            made.m_pieces.push_back(made.ReadPlace(pattern.substr(at + 1, end - at - 1), pattern));
            at = end + 1;
        } else if (pattern.substr(at, 2) == "??") {
            made.m_pieces.push_back({.kind = SPiece::EnKind::Any});
            at += 2;
        } else {
            const int high = DigitOf(pattern[at]);
            const int low = at + 1 < pattern.size() ? DigitOf(pattern[at + 1]) : -1;
            if (high < 0 || low < 0) {
                throw CPatternProblem(
                    pattern[at] == '}' ? EnPatternProblem::Brace : EnPatternProblem::HexDigits, pattern);
            }
            made.m_pieces.push_back({.byte = static_cast<char>(high * 16 + low)});
            at += 2;
        }
        bytes += made.m_pieces.back().bytes;
        if (bytes > kLongestMessage + terminator.size()) {
            throw CPatternProblem(EnPatternProblem::TooLong, pattern);
        }
    }
    made.DropTerminator(terminator);
    if (made.m_pieces.empty()) {
        throw CPatternProblem(EnPatternProblem::Empty, pattern);
    }
    return made;
}

/** A place of the hexadecimal form. @param inside  what stands between the braces */
CMessagePattern::SPiece CMessagePattern::ReadPlace(std::string_view inside, std::string_view pattern) {
    const std::size_t colon = inside.find(':');
    AddName(inside.substr(0, colon), pattern);
    std::string_view form = colon == std::string_view::npos ? std::string_view() : inside.substr(colon + 1);
    if (form == "*") {
        return {.kind = SPiece::EnKind::Rest, .bytes = 0};
    }
    SPiece piece{.kind = SPiece::EnKind::Number};
    piece.bytes = form.empty() ? 0 : static_cast<std::size_t>(std::max(DigitOf(form.front()), 0));
    form.remove_prefix(form.empty() ? 0 : 1);
    piece.isLittleEndian = form.starts_with("le");
    form.remove_prefix(piece.isLittleEndian ? 2 : 0);
    piece.isSigned = form == "s";
    if (piece.bytes == 0 || piece.bytes > kLongestNumber || !(form.empty() || piece.isSigned)) {
        throw CPatternProblem(EnPatternProblem::PlaceLength, pattern);
    }
    return piece;
}

void CMessagePattern::DropTerminator(std::string_view terminator) {
    if (terminator.empty()) {
        return;
    }
    if (!m_isHex) {
        std::string& end = m_places.empty() ? m_begin : m_places.back().behind.bytes;
        if (end.ends_with(terminator)) {
            end.resize(end.size() - terminator.size());
        }
        return;
    }
    const bool endsSo = m_pieces.size() >= terminator.size() &&
                        std::equal(terminator.rbegin(), terminator.rend(), m_pieces.rbegin(),
                                   [](char byte, const SPiece& piece) {
                                       return piece.kind == SPiece::EnKind::Byte && piece.byte == byte;
                                   });
    if (endsSo) {
        m_pieces.resize(m_pieces.size() - terminator.size());
    }
}

CMessagePattern::SLiteral CMessagePattern::MakeLiteral(std::string bytes) {
    SLiteral literal{std::move(bytes)};
    literal.borders.resize(literal.bytes.size());
    std::size_t border = 0;
    for (std::size_t at = 1; at < literal.bytes.size(); ++at) {
        while (border > 0 && literal.bytes[at] != literal.bytes[border]) {
            border = literal.borders[border - 1];
        }
        border += literal.bytes[at] == literal.bytes[border] ? 1 : 0;
        literal.borders[at] = static_cast<std::uint16_t>(border);
    }
    return literal;
}

/** The first occurrence, by the method of Knuth, Morris and Pratt: no byte of the text is read twice. */
std::size_t CMessagePattern::Find(const SLiteral& literal, std::string_view text) {
    std::size_t same = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        while (same > 0 && text[at] != literal.bytes[same]) {
            same = literal.borders[same - 1];
        }
        same += text[at] == literal.bytes[same] ? 1 : 0;
        if (same == literal.bytes.size()) {
            return at + 1 - same;
        }
    }
    return std::string_view::npos;
}

bool CMessagePattern::Match(std::string_view message, std::vector<std::string>& captures) const {
    return m_isHex ? MatchHex(message, captures) : MatchText(message, captures);
}

bool CMessagePattern::MatchText(std::string_view message, std::vector<std::string>& captures) const {
    if (!message.starts_with(m_begin)) {
        return false;
    }
    captures.clear();
    message.remove_prefix(m_begin.size());
    for (const SPlace& place : m_places) {
        // Only the last place can have nothing behind it.
        const std::size_t end = place.behind.bytes.empty() ? message.size() : Find(place.behind, message);
        if (end == std::string_view::npos) {
            return false;
        }
        if (place.isNamed) {
            captures.emplace_back(message.substr(0, end));
        }
        message.remove_prefix(end + place.behind.bytes.size());
    }
    return message.empty();
}

bool CMessagePattern::MatchHex(std::string_view message, std::vector<std::string>& captures) const {
    captures.clear();
    for (const SPiece& piece : m_pieces) {
        if (piece.kind == SPiece::EnKind::Rest) {
            captures.push_back(HexText(message));
            return true;
        }
        if (message.size() < piece.bytes ||
            (piece.kind == SPiece::EnKind::Byte && message[0] != piece.byte)) {
            return false;
        }
        if (piece.kind == SPiece::EnKind::Number) {
            captures.push_back(NumberText(piece, message.substr(0, piece.bytes)));
        }
        message.remove_prefix(piece.bytes);
    }
    return message.empty();
}

std::string CMessagePattern::NumberText(const SPiece& piece, std::string_view bytes) {
    std::int64_t number = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const char byte = bytes[piece.isLittleEndian ? bytes.size() - 1 - at : at];
        number = number * 256 + static_cast<unsigned char>(byte);
    }
    const std::int64_t range = std::int64_t{1} << (8 * bytes.size());
    return std::to_string(piece.isSigned && number >= range / 2 ? number - range : number);
}
