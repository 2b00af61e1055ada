#pragma once

#include "libraries/serial_names/SerialWalk_linux.h"
#include "platform/RavLog.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/** Lines by the numbers of their COM names. */
using NamedLines = std::map<int, SFoundLine>;

/** Logs a change of the names of serial ports in the system log. May throw. Any thread. */
void LogSerialName(RavLog::EnLogLevel level, const std::string& text);

/**
 * The names of the ports. Knows no file; SerialNames_linux.cpp keeps the table in one. One thread at a time.
 *
 * A line keeps its number by its identity. When several lines share an identity, as cheap converters without
 * a real serial number do, each keeps its number by its place. A single line keeps its number wherever it is.
 */
class CSerialNameTable {
  public:
    struct SEntry {
        std::string identity;  ///< empty: an administrator's entry, which means whatever is at the device
        std::string place;
        std::string device;
    };

    CSerialNameTable() = default;

    /** Reads the table from a JSON object. Invalid entries are kept, and reported in the system log. */
    explicit CSerialNameTable(nlohmann::json document);

    std::optional<SEntry> Find(int number) const;

    /**
     * Names the lines that are present. A name means, in this order: the link that the administrator made in
     * /dev, the device of an administrator's entry, the line of an entry with its identity. A line without
     * any of these gets an entry: a built-in port its own number, any other the lowest free number from 5 up.
     * @param links  the links in /dev by their numbers
     */
    NamedLines Name(std::vector<SFoundLine> lines, const std::map<int, std::string>& links);

    const nlohmann::json& Document() const { return m_document; }

    /** True when Name has changed the document since the last call. */
    bool TakeChanged();

  private:
    void NameFixed(std::vector<SFoundLine>& lines, const std::map<int, std::string>& fixed,
                   NamedLines& named);
    void NameKnown(std::vector<SFoundLine>& lines, bool samePlace, const std::map<int, std::string>& fixed,
                   NamedLines& named);
    void NameNew(const SFoundLine& line, NamedLines& named);
    void Reserve(int number, const std::string& link, const std::string& identity);
    void Store(int number, const SEntry& entry);

    nlohmann::json m_document = nlohmann::json::object();
    std::map<int, SEntry> m_entries;
    bool m_changed = false;
};
