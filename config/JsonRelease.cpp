#include "config/JsonRelease.h"

// The depth of documents is bounded before they are made, and what is cleared holds nothing by then.
// NOLINTNEXTLINE(misc-no-recursion, bugprone-exception-escape)
void ReleaseJson(nlohmann::json& value) noexcept {
    if (value.is_structured()) {
        for (nlohmann::json& part : value) {
            ReleaseJson(part);
        }
        value.clear();  // these values are empty: the stack for them stays empty
    }
    value = nullptr;
}
