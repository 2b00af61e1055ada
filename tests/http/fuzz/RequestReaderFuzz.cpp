// Any bytes, in any pieces: the reader ends, and understands the same in one piece as byte by byte.
#include "tests/http/Understood.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const hv::internal::Limits limits{.headerBytes = 512, .bodyBytes = 4096, .chunkOverheadBytes = 256};
    const std::string bytes(data, data + std::min<std::size_t>(size, 300));
    const std::string whole = Understood(bytes, bytes.size(), limits);
    const std::string slow = Understood(bytes, 1, limits);
    const bool bothRead = whole.size() > 3 && slow.size() > 3;
    // Only when a request is cut short, one way may have found the fault and the other not yet.
    if (whole != slow && (bothRead || (!whole.empty() && !slow.empty() && whole.size() != slow.size()))) {
        std::abort();
    }
    return 0;
}
