#pragma once

#include <nlohmann/json.hpp>

/**
 * Destroys the content of a JSON value and leaves null, without allocating memory. The JSON library's
 * destructor moves nested values onto a stack that it allocates, and a failure of that allocation ends the
 * process. Recurses as deep as the value is nested: at most kMaxJsonDepth levels.
 */
// NOLINTNEXTLINE(bugprone-exception-escape): what is cleared holds nothing by then
void ReleaseJson(nlohmann::json& value) noexcept;

/** Releases a value at the end of a scope. The value outlives it. */
class CJsonRelease {
  public:
    explicit CJsonRelease(nlohmann::json& value) : m_value(value) {}
    ~CJsonRelease() { ReleaseJson(m_value); }  // NOLINT(bugprone-exception-escape): as above
    CJsonRelease(const CJsonRelease&) = delete;
    CJsonRelease& operator=(const CJsonRelease&) = delete;

  private:
    nlohmann::json& m_value;
};
