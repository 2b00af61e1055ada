#pragma once

#include "equipment/values/ConfigProblem.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/** What is wrong with a pattern. */
enum class EnPatternProblem : std::uint8_t {
    Empty,           ///< nothing is left to compare
    TooLong,         ///< longer than a message can be
    Brace,           ///< a brace without its other half
    PlaceName,       ///< a name of a place that can't be
    PlaceTwice,      ///< two places of one name
    PlacesTogether,  ///< two places without a text between them
    HexDigits,       ///< neither a byte, nor "??", nor a place
    PlaceLength,     ///< the length or the form of a number
    RestNotLast,     ///< something follows "{name:*}"
};

/** Why a text is no pattern. */
class CPatternProblem : public CConfigProblem {
  public:
    /** @param pattern  the text, for the sentence */
    CPatternProblem(EnPatternProblem kind, std::string_view pattern);

    EnPatternProblem Kind() const { return m_kind; }

  private:
    EnPatternProblem m_kind;
};

/**
 * What a message of a device looks like, with named places in it (docs/files.md describes both forms). Never
 * changes after it was made, so any thread may use it.
 */
class CMessagePattern {
  public:
    /**
     * Characters to compare, "{name}" for what comes up to the first occurrence of the characters behind it,
     * "{}" for the same without a name, "{{" and "}}" for braces.
     * @param terminator  of the messages: taken off the end of the pattern
     * @throw CPatternProblem
     */
    static CMessagePattern FromText(std::string_view pattern, std::string_view terminator = {});

    /**
     * Bytes in hexadecimal digits, "??" for any byte, "{name:2}" for an unsigned number of two bytes, with
     * "le" little-endian and with "s" signed, and "{name:*}" for all bytes that are left.
     * @param terminator  as above
     * @throw CPatternProblem
     */
    static CMessagePattern FromHex(std::string_view pattern, std::string_view terminator = {});

    /** The names of the places, in the order of Match. */
    const std::vector<std::string>& Places() const { return m_names; }

    /**
     * Compares a whole message. The time is linear in its length.
     * @param captures  gets what stands in each place when it matches: the bytes themselves, or of the
     * hexadecimal form the number in decimal digits, or the digits of the rest
     */
    [[nodiscard]] bool Match(std::string_view message, std::vector<std::string>& captures) const;

  private:
    /** A run of characters of the text form, found in linear time. */
    struct SLiteral {
        std::string bytes;
        std::vector<std::uint16_t> borders{};  ///< of each beginning: length of its longest border
    };

    /** A place of the text form and what stands behind it. */
    struct SPlace {
        bool isNamed = false;
        SLiteral behind;
    };

    /** A piece of the hexadecimal form. */
    struct SPiece {
        enum class EnKind : std::uint8_t { Byte, Any, Number, Rest };
        EnKind kind = EnKind::Byte;
        char byte = 0;
        std::size_t bytes = 1;
        bool isLittleEndian = false;
        bool isSigned = false;
    };

    static SLiteral MakeLiteral(std::string bytes);
    static std::size_t Find(const SLiteral& literal, std::string_view text);
    static std::string NumberText(const SPiece& piece, std::string_view bytes);
    void AddName(std::string_view name, std::string_view pattern);
    SPiece ReadPlace(std::string_view inside, std::string_view pattern);
    void DropTerminator(std::string_view terminator);
    bool MatchText(std::string_view message, std::vector<std::string>& captures) const;
    bool MatchHex(std::string_view message, std::vector<std::string>& captures) const;

    bool m_isHex = false;
    std::string m_begin;  ///< of the text form: what stands before the first place
    std::vector<SPlace> m_places;
    std::vector<SPiece> m_pieces;
    std::vector<std::string> m_names;
};
