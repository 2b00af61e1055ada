#pragma once

#include <stdexcept>
#include <string>

/** Why something can't be done with a generation. Nothing has changed then. */
enum class EnVersionProblem {
    Missing,         ///< there is no generation of this name
    Torn,            ///< a document of the generation is damaged or can't be read
    BadCommands,     ///< the generation's commands have values of a wrong type
    NotKept,         ///< the present state could not be kept
    Busy,            ///< others keep changing the documents
    NameTooLong,     ///< a name has more than kLongestVersionName characters
    NameUnreadable,  ///< a name has control characters
    NamesTakeRoom,   ///< the named generations would take too much room
    NameNotStored,   ///< the names can't be written
};

/** A refusal for the client; what() is the reason for the log. */
class CVersionProblem : public std::runtime_error {
  public:
    CVersionProblem(EnVersionProblem kind, const std::string& reason)
        : std::runtime_error(reason), m_kind(kind) {}

    EnVersionProblem Kind() const noexcept { return m_kind; }

  private:
    EnVersionProblem m_kind;
};
