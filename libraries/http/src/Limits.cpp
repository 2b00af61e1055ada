#include "libraries/http/src/Limits.h"

namespace hv::internal {

Limits& LimitsOfNewServers() {
    static Limits limits;
    return limits;
}

}  // namespace hv::internal
