#include "libraries/log/StandardError.h"

#include <cstdio>

namespace RavLog {

void WriteToStandardError(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

}  // namespace RavLog
