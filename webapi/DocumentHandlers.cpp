// The documents that describe the user's pages: read and replaced whole, never interpreted.
//
// A reply with a document names its state in ETag. A client that already has this state says so in
// If-None-Match and gets 304. A client that writes on top of it says so in If-Match and gets 412 when
// something else has been stored meanwhile. The two forms of a reply, plain and compressed, have different
// tags; either names the state.

#include "config/Gzip.h"
#include "platform/RavLog.h"
#include "server/LogText.h"
#include "server/RouterMgr.h"
#include "userdata/UserData.h"
#include "webapi/ContentCoding.h"
#include "webapi/EntityTags.h"

#include <new>

namespace {

using Getter = CDocument::State (CUserData::*)();
using Setter = void (CUserData::*)(nlohmann::json);
using Replacer = CDocument::State (CUserData::*)(nlohmann::json, const CDocument::StateCheck&);

constexpr const char* kGzipMark = "-gzip";  // ends the tag of a compressed reply

/**
 * Sizes of JSON that are compressed: less fits into one packet anyhow, more would hold up the first reader
 * too long.
 */
constexpr std::size_t kPackedAtLeast = 1024;
constexpr std::size_t kPackedAtMost = std::size_t{32} * 1024 * 1024;

std::string Quoted(std::string_view tag) {
    return '"' + std::string(tag) + '"';
}

bool NamesState(std::string_view tag, const std::string& stored) {
    return tag == "*" || tag == stored || tag == stored + kGzipMark;
}

/** The tag under which the client has this state already (RFC 9110, 13.1.2); empty: it doesn't have it. */
std::string KnownTag(const HttpRequest& request, const CDocumentState& state) {
    std::string known;
    if (const auto list = HeaderOf(request, "If-None-Match")) {
        AnyEntityTag(*list, [&](std::string_view tag, bool /*isWeak*/) {
            if (NamesState(tag, state.Tag())) {
                known = tag == "*" ? state.Tag() : std::string(tag);
            }
            return !known.empty();
        });
    }
    return known;
}

/** Whether a write requires the state of this tag (RFC 9110, 13.1.1). */
bool AsksFor(const std::string& ifMatch, const std::string& stored) {
    return AnyEntityTag(
        ifMatch, [&stored](std::string_view tag, bool isWeak) { return !isWeak && NamesState(tag, stored); });
}

/** The last step for replies that are a status without an envelope. */
int RespondWithStatus(http_status status, const SRequestTrace& trace) {
    WriteOperationLog(trace.client, trace.path, FormatLogText(status, trace.detail));
    return status;
}

/** The compressed envelope of a document; null when it gains nothing or can't be created. */
CDocumentState::Packed PackedEnvelope(const CDocumentState& state) {
    const std::size_t size = state.Json().size();
    if (size < kPackedAtLeast || size > kPackedAtMost) {
        return nullptr;
    }
    return state.PackedBy([&state, size]() -> CDocumentState::Packed {
        try {
            const SEnvelopeFrame frame = RouterMgr::FrameEnvelope(CodeSuccess, true);
            auto packed = std::make_shared<const std::string>(Gzip({frame.head, state.Json(), frame.tail}));
            return packed->size() < size ? packed : nullptr;
        } catch (const std::bad_alloc&) {
            RavLog::WriteSystemLog(RavLog::Warn, "PackedEnvelope",
                                   "no memory to compress a document of " + std::to_string(size) +
                                       " bytes: it is sent as it is until it changes");
            return nullptr;
        }
    });
}

int ReadDocument(HttpRequest* request, HttpResponse* response, Getter getter) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SRequestTrace trace{MakeClientId(*request), request->path, {}};
    WriteOperationLog(trace.client, trace.path, std::string());
    const CDocument::State state = (CUserData::GetInstance().*getter)();
    response->SetHeader("Cache-Control", "no-cache");  // it may be cached, but not used without asking
    response->SetHeader("Vary", "Accept-Encoding");
    if (const std::string known = KnownTag(*request, *state); !known.empty()) {
        response->SetHeader("ETag", Quoted(known));
        return RespondWithStatus(HTTP_STATUS_NOT_MODIFIED, trace);
    }
    CDocumentState::Packed packed;
    if (TakesGzip(HeaderOf(*request, "Accept-Encoding").value_or(""))) {
        packed = PackedEnvelope(*state);
    }
    response->SetHeader("ETag", Quoted(state->Tag() + (packed ? kGzipMark : "")));
    if (packed) {
        return RouterMgr::RespondReady(response, SGzipEnvelope{std::move(packed)}, trace);
    }
    const std::shared_ptr<const std::string> json(state, &state->Json());
    return RouterMgr::RespondReady(response, SDataText{json}, trace);
}

int StoreDocument(HttpRequest* request, HttpResponse* response, Setter set, Replacer replace) {
    return RouterMgr::HandleWrite(request, response, {.requiredKey = "data"}, [=](auto& body, auto& trace) {
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
