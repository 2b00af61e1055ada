#pragma once

#include <string>

/** Percent encoding of URLs. */
class HUrl {
  public:
    /** %XX becomes a byte, + a blank; an invalid escape stays as it is. */
    static std::string unescape(const std::string& text);
};
