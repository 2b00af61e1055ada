// The documents that describe the user's pages: read and replaced whole, never looked into.
//
// A reply with a document names its state in ETag. Who has it already says so in If-None-Match and gets 304;
// who writes on top of it says so in If-Match and gets 412 when something else has been stored meanwhile.

#include "server/LogText.h"
#include "server/RouterMgr.h"
#include "userdata/UserData.h"
#include "webapi/EntityTags.h"

namespace {

using Getter = CDocumentText::State (CUserData::*)();
using Setter = void (CUserData::*)(nlohmann::json);
using Replacer = CDocumentText::State (CUserData::*)(nlohmann::json, const CUserData::StateCheck&);

std::string Quoted(const std::string& tag) {
    return '"' + tag + '"';
}

/** Whether the client has this state already (RFC 9110, 13.1.2). */
bool HasState(const HttpRequest& request, const CDocumentState& state) {
    const auto known = HeaderOf(request, "If-None-Match");
    return known && AnyEntityTag(*known, [&state](std::string_view tag, bool /*isWeak*/) {
               return tag == "*" || tag == state.Tag();
           });
}

/** Whether a write asks for the state of this tag (RFC 9110, 13.1.1). */
bool AsksFor(const std::string& ifMatch, const std::string& stored) {
    return AnyEntityTag(ifMatch, [&stored](std::string_view tag, bool isWeak) {
        return tag == "*" || (!isWeak && tag == stored);
    });
}

/** The way out for the replies that are a status and no envelope. */
int RespondWithStatus(http_status status, const SRequestTrace& trace) {
    WriteOperationLog(trace.client, trace.path, FormatLogText(int{status}, trace.detail));
    return status;
}

int ReadDocument(HttpRequest* request, HttpResponse* response, Getter getter) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SRequestTrace trace{MakeClientId(*request), request->path, {}};
    WriteOperationLog(trace.client, trace.path, std::string());
    const CDocumentText::State state = (CUserData::GetInstance().*getter)();
    response->SetHeader("ETag", Quoted(state->Tag()));
    response->SetHeader("Cache-Control", "no-cache");  // it may be kept, but not used unasked
    if (HasState(*request, *state)) {
        return RespondWithStatus(HTTP_STATUS_NOT_MODIFIED, trace);
    }
    SResponseData content;
    if (!state->Json().empty()) {
        content.dataText = std::shared_ptr<const std::string>(state, &state->Json());
    }
    return RouterMgr::Respond(response, CodeSuccess, content, trace);
}

int StoreDocument(HttpRequest* request, HttpResponse* response, Setter set, Replacer replace) {
    return RouterMgr::HandleWrite(request, response, "data", nullptr, [=](auto& body, auto& trace) {
        CUserData& data = CUserData::GetInstance();
        if (const auto ifMatch = HeaderOf(*request, "If-Match")) {
            const auto stored = (data.*replace)(std::move(body["data"]), [&ifMatch](const std::string& tag) {
                return AsksFor(*ifMatch, tag);
            });
            if (!stored) {
                trace.detail = "another state is stored";
                return RespondWithStatus(HTTP_STATUS_PRECONDITION_FAILED, trace);
            }
            response->SetHeader("ETag", Quoted(stored->Tag()));
        } else {
            (data.*set)(std::move(body["data"]));
        }
        return RouterMgr::Respond(response, CodeSuccess, trace);
    });
}

}  // namespace

int RouterMgr::GetPageLayoutInfo(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetLayoutState);
}

int RouterMgr::GetMaterialList(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetMaterialsState);
}

int RouterMgr::GetComponentInteractionInfo(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetComponentConfigState);
}

int RouterMgr::GetCentralControlInterfaceList(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetApiListState);
}

int RouterMgr::GetConfigList(HttpRequest* request, HttpResponse* response) {
    return ReadDocument(request, response, &CUserData::GetInterfaceConfigState);
}

int RouterMgr::SetCentralControlWebLayout(HttpRequest* request, HttpResponse* response) {
    return StoreDocument(request, response, &CUserData::SetLayout, &CUserData::ReplaceLayout);
}

int RouterMgr::SetMaterialList(HttpRequest* request, HttpResponse* response) {
    return StoreDocument(request, response, &CUserData::SetMaterials, &CUserData::ReplaceMaterials);
}

int RouterMgr::UpdateComponentInteraction(HttpRequest* request, HttpResponse* response) {
    return StoreDocument(request, response, &CUserData::SetComponentConfig,
                         &CUserData::ReplaceComponentConfig);
}
