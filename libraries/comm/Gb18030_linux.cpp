#include "libraries/comm/Content.h"

#include <array>
#include <cerrno>
#include <cstdint>

#include <iconv.h>

namespace comm {

namespace {

/** A converter of the C library; each thread has its own, since a converter holds state. */
class CConverter {
  public:
    CConverter() : m_handle(iconv_open("GB18030", "UTF-8")) {
        // The C library's mark of failure is a pointer of value -1.
        m_open = reinterpret_cast<std::intptr_t>(m_handle) != -1;
    }
    ~CConverter() {
        if (m_open) {
            iconv_close(m_handle);
        }
    }
    CConverter(const CConverter&) = delete;
    CConverter& operator=(const CConverter&) = delete;

    bool Convert(std::string_view text, std::string& out) {
        if (!m_open) {
            return false;
        }
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        // iconv takes its input as non-const and leaves it unchanged.
        char* from = const_cast<char*>(text.data());
        std::size_t left = text.size();
        std::array<char, 1024> piece{};
        while (left > 0) {
            char* to = piece.data();
            std::size_t room = piece.size();
            const std::size_t result = iconv(m_handle, &from, &left, &to, &room);
            out.append(piece.data(), piece.size() - room);
            if (result != 0 && !(result == static_cast<std::size_t>(-1) && errno == E2BIG)) {
                return false;
            }
        }
        return true;
    }

  private:
    iconv_t m_handle;
    bool m_open = false;
};

}  // namespace

bool AppendGb18030(std::string_view text, std::string& out) {
    static thread_local CConverter converter;
    return converter.Convert(text, out);
}

}  // namespace comm
