#pragma once

#include <cstdint>
#include <string_view>

/** What lets a command be sent. */
enum class EnSendSource : std::uint8_t {
    Unknown,
    Component,  ///< a click
    Terminal,   ///< somebody sends it without a component
    Poll,       ///< the server asks a device by itself
};

/** Who sends a command, for a CPortListener. */
struct SSendOrigin {
    EnSendSource source = EnSendSource::Unknown;
    std::int32_t nodeId = 0;     ///< interface through which it is sent
    std::int32_t component = 0;  ///< of a click
    std::string_view trigger;    ///< of a click, such as "click"
    std::string_view command;    ///< name of the command
    std::string_view client;     ///< as MakeClientId makes it
};

/**
 * Tells who sends, for the sends of the calling thread while it lives. Costs no copy: the texts outlive it.
 */
class CSendOrigin {
  public:
    explicit CSendOrigin(const SSendOrigin& origin) : m_origin(origin), m_outer(Current()) {
        Current() = &m_origin;
    }
    ~CSendOrigin() { Current() = m_outer; }
    CSendOrigin(const CSendOrigin&) = delete;
    CSendOrigin& operator=(const CSendOrigin&) = delete;

    /** Who sends on the calling thread; null: nobody has told. */
    static const SSendOrigin* OfThread() { return Current(); }

  private:
    static const SSendOrigin*& Current() {
        thread_local const SSendOrigin* current = nullptr;
        return current;
    }

    const SSendOrigin m_origin;
    const SSendOrigin* const m_outer;
};
