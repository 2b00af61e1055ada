#include "equipment/Refusal.h"

#include "userdata/UserData.h"

std::string CRefusal::Sentence() const {
    return CUserData::GetInstance().GetLanguage() == 0 ? m_chinese : what();
}

int WriteEquipment(HttpRequest* request, HttpResponse* response,
                   const std::function<nlohmann::json(nlohmann::json& body)>& work) {
    return RouterMgr::HandleWrite(request, response, {}, [&](nlohmann::json& body, SRequestTrace& trace) {
        SResponseData content;
        try {
            content.data = work(body);
            return RouterMgr::Respond(response, CodeSuccess, content, trace);
        } catch (const CRefusal& refusal) {
            trace.detail = refusal.what();
            content.message = refusal.Sentence();
            return RouterMgr::Respond(response, refusal.Code(), content, trace);
        }
    });
}
