// The documents that describe the user's pages: read and replaced whole, never looked into.

#include "server/RouterMgr.h"
#include "userdata/UserData.h"

namespace {

using Getter = CDocumentText::Text (CUserData::*)();
using Setter = void (CUserData::*)(nlohmann::json);

int ReadDocument(HttpRequest* request, HttpResponse* response, Getter getter) {
    return RouterMgr::HandleRead(request, response,
                                 [getter](SResponseData& content, SRequestTrace& /*trace*/) {
                                     content.dataText = (CUserData::GetInstance().*getter)();
                                 });
}

int StoreDocument(HttpRequest* request, HttpResponse* response, Setter setter) {
    return RouterMgr::HandleWrite(request, response, "data", nullptr, [=](auto& body, auto& trace) {
        (CUserData::GetInstance().*setter)(std::move(body["data"]));
        return RouterMgr::Respond(response, CodeSuccess, trace);
    });
}

}  // namespace

int RouterMgr::GetPageLayoutInfo(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetLayoutText);
}

int RouterMgr::GetMaterialList(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetMaterialsText);
}

int RouterMgr::GetComponentInteractionInfo(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetComponentConfigText);
}

int RouterMgr::GetCentralControlInterfaceList(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetApiListText);
}

int RouterMgr::GetConfigList(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetInterfaceConfigText);
}

int RouterMgr::SetCentralControlWebLayout(HttpRequest* request, HttpResponse* response) {
    return StoreDocument(request, response, &CUserData::SetLayout);
}

int RouterMgr::SetMaterialList(HttpRequest* request, HttpResponse* response) {
    return StoreDocument(request, response, &CUserData::SetMaterials);
}

int RouterMgr::UpdateComponentInteraction(HttpRequest* request, HttpResponse* response) {
    return StoreDocument(request, response, &CUserData::SetComponentConfig);
}
