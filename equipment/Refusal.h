#pragma once

#include "server/RouterMgr.h"

#include <functional>
#include <stdexcept>
#include <string>

/** Why a request about the equipment can't be carried out: a code, and a sentence for the user. */
class CRefusal : public std::runtime_error {
  public:
    /** @param english  also for the log */
    CRefusal(const std::string& english, std::string chinese, EnResponseCode code = CodeBadRequest)
        : std::runtime_error(english), m_chinese(std::move(chinese)), m_code(code) {}

    EnResponseCode Code() const { return m_code; }

    /** The sentence in the user's language. */
    std::string Sentence() const;

  private:
    std::string m_chinese;
    EnResponseCode m_code;
};

/**
 * The form of the write routes of this folder: RouterMgr::HandleWrite, where a CRefusal becomes the reply.
 * @param work  gets the body, and gives the data of the reply, null for none
 */
int WriteEquipment(HttpRequest* request, HttpResponse* response,
                   const std::function<nlohmann::json(nlohmann::json& body)>& work);
