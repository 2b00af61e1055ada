#include "config/JsonRelease.h"

// NOLINTNEXTLINE(misc-no-recursion): the depth of documents is bounded before they are made
void ReleaseJson(nlohmann::json& value) noexcept {
    if (value.is_structured()) {
        for (nlohmann::json& part : value) {
            ReleaseJson(part);
        }
        value.clear();  // of values that hold nothing: the stack for them stays empty
    }
    value = nullptr;
}
