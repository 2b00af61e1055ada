#include "simulation/OutputPipe.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace simulation {

namespace {

constexpr int kOutput = 1;  // the number of standard output in the C runtime
constexpr unsigned kRoom = 65536;

}  // namespace

OutputPipe::OutputPipe() {
    std::array<int, 2> ends{};
    if (_pipe(ends.data(), kRoom, _O_BINARY) != 0) {
        throw std::system_error(errno, std::generic_category(), "_pipe");
    }
    m_before = _dup(kOutput);
    m_reader = ends[0];
    _dup2(ends[1], kOutput);
    _close(ends[1]);
}

OutputPipe::~OutputPipe() {
    _dup2(m_before, kOutput);
    _close(m_before);
    EndReading();
}

std::string OutputPipe::Read() {
    DWORD waiting = 0;
    for (int look = 0; look < 10 && waiting == 0; ++look) {
        Sleep(look == 0 ? 0 : 10);
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the system gives it as a number
        PeekNamedPipe(reinterpret_cast<HANDLE>(_get_osfhandle(m_reader)), nullptr, 0, nullptr, &waiting,
                      nullptr);
    }
    std::string text(waiting, '\0');
    if (waiting > 0) {
        text.resize(static_cast<std::size_t>(std::max(_read(m_reader, text.data(), waiting), 0)));
    }
    return text;
}

void OutputPipe::EndReading() {
    if (m_reader >= 0) {
        _close(std::exchange(m_reader, -1));
    }
}

void OutputPipe::CloseOutput() {
    _close(kOutput);
}

}  // namespace simulation
