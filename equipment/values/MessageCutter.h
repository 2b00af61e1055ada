#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/** Longest message, without its terminator. */
inline constexpr std::size_t kLongestMessage = 4096;

/** Longest terminator. */
inline constexpr std::size_t kLongestTerminator = 8;

/** How the bytes of a device become messages. */
struct SFraming {
    enum class EnKind : std::uint8_t {
        Terminator,  ///< each message ends with the same bytes
        Length,      ///< all messages are equally long
        Silence,     ///< a message ends when nothing comes for a while
    };

    EnKind kind = EnKind::Terminator;
    std::string terminator;                ///< 1 to kLongestTerminator bytes
    std::size_t length = 0;                ///< 1 to kLongestMessage
    std::chrono::milliseconds silence{0};  ///< above 0
};

/**
 * Cuts what one device sends into messages. A message without bytes is left out. A message that is too long
 * is dropped, up to the next terminator or silence. Never holds more than one message. One thread at a time.
 */
class CMessageCutter {
  public:
    /** Gets a message, which is valid during the call only. */
    using Take = std::function<void(std::string_view message)>;

    explicit CMessageCutter(SFraming framing) : m_framing(std::move(framing)) {}

    /**
     * Takes the next bytes, however they are divided.
     * @return whether a message turned out to be too long
     */
    bool Add(std::string_view bytes, const Take& take);

    /** Nothing has come for the time of the framing: what is there is a message. For that framing only. */
    void EndBySilence(const Take& take);

    /** Whether something is held that a silence would end. */
    bool WaitsForSilence() const {
        return m_framing.kind == SFraming::EnKind::Silence && (m_isDropping || !m_held.empty());
    }

  private:
    bool AddTerminated(std::string_view bytes, const Take& take);
    void AddOfLength(std::string_view bytes, const Take& take);
    std::size_t EndOfTerminator(std::string_view bytes) const;
    bool Hold(std::string_view bytes, std::size_t most);

    SFraming m_framing;
    std::string m_held;         ///< the beginning of a message; while dropping, the last bytes of the stream
    bool m_isDropping = false;  ///< the present message is too long
};
