#pragma once

#include <stdexcept>
#include <string>

/** Why a document or a pattern can't be used: one sentence in each language, which says what to do. */
class CConfigProblem : public std::runtime_error {
  public:
    CConfigProblem(const std::string& english, std::string chinese)
        : std::runtime_error(english), m_chinese(std::move(chinese)) {}

    const std::string& Chinese() const { return m_chinese; }

  private:
    std::string m_chinese;
};
