// Any bytes, in any pieces: the reader of requests ends, and understands the same in one piece as byte by
// byte.
#include "tests/fuzz/FuzzTarget.h"
#include "tests/http/Understood.h"

FUZZ_TARGET(http) {
    const hv::internal::Limits limits{.headerBytes = 512, .bodyBytes = 4096, .chunkOverheadBytes = 256};
    bytes = bytes.substr(0, 300);
    const std::string whole = Understood(bytes, bytes.size(), limits);
    const std::string slow = Understood(bytes, 1, limits);
    const bool bothRead = whole.size() > 3 && slow.size() > 3;
    // Only when a request is cut short, one way may have found the fault and the other not yet.
    Require(whole == slow || (!bothRead && (whole.empty() || slow.empty() || whole.size() == slow.size())));
}
