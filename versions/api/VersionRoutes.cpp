#include "versions/api/VersionRoutes.h"

#include "include/GlobalConfig.h"
#include "platform/Paths.h"
#include "server/RouterMgr.h"
#include "userdata/UserData.h"
#include "versions/api/Restoring.h"
#include "versions/api/VersionTexts.h"
#include "webapi/EntityTags.h"

#include <filesystem>

namespace {

using nlohmann::json;

const std::string& Folder() {
    return GetConfigInstance().user_data_path;
}

CGenerations& Generations() {
    return CUserData::GetInstance().GetGenerations();
}

/** The time in an id: "2026-11-22T14:05:33". */
std::string TimeText(std::string id) {
    id.replace(10, 1, "T");
    id.replace(13, 1, ":");
    id.replace(16, 1, ":");
    return id;
}

int ListVersions(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SResponseData content;
    json& versions = content.data["versions"] = json::array();
    for (const SVersion& version : Generations().List(Folder())) {
        versions.push_back({{"id", version.id},
                            {"time", TimeText(version.id)},
                            {"name", version.name},
                            {"documents", version.sizes}});
    }
    if (IsKnownState(*request, response, CDocumentState(content.data).Tag())) {
        return HTTP_STATUS_NOT_MODIFIED;
    }
    return RouterMgr::WriteEnvelope(response, CodeSuccess, content);
}

int GetVersionDocument(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    const std::string id = request->GetParam("id");
    try {
        const std::string path = CGenerations::PathOf(Folder(), id, request->GetParam("document"));
        const std::uintmax_t size = std::filesystem::file_size(PathFromNarrow(path));
        if (IsKnownState(*request, response, id + '-' + std::to_string(size))) {
            return HTTP_STATUS_NOT_MODIFIED;
        }
        response->SetContentType("application/json; charset=utf-8");
        return response->File(path.c_str());
    } catch (const std::exception&) {
        return HTTP_STATUS_NOT_FOUND;  // it may have been removed meanwhile
    }
}

/** A write route. Problems become sentences for the client. */
template <typename Work>
int Write(HttpRequest* request, HttpResponse* response, const Work& work) {
    return RouterMgr::HandleWrite(request, response, {}, [&](json& body, SRequestTrace& trace) {
        SResponseData content;
        try {
            content.data = work(body);
            return RouterMgr::Respond(response, CodeSuccess, content, trace);
        } catch (const CVersionProblem& problem) {
            trace.detail = problem.what();
            content.message = VersionProblemText(problem.Kind(), CUserData::GetInstance().GetLanguage() == 0);
            return RouterMgr::Respond(response, CodeBadRequest, content, trace);
        }
    });
}

int NameVersion(HttpRequest* request, HttpResponse* response) {
    return Write(request, response, [](const json& body) {
        Generations().SetName(Folder(), body.at("id").get<std::string>(), body.at("name").get<std::string>());
        return json();
    });
}

int KeepVersion(HttpRequest* request, HttpResponse* response) {
    return Write(request, response, [](const json& body) {
        const std::string name = CheckedVersionName(body.at("name").get<std::string>());
        const std::string id = KeepPresent();
        Generations().SetName(Folder(), id, name);
        return json{{"id", id}};
    });
}

int RestoreOneVersion(HttpRequest* request, HttpResponse* response) {
    return Write(request, response, [](const json& body) {
        const SRestored restored = RestoreVersion(body.at("id").get<std::string>());
        json missing = json::array();
        for (const SMissingInterface& one : restored.missing) {
            missing.push_back({{"nodeId", one.nodeId}, {"name", one.name}});
        }
        return json{{"kept", restored.kept}, {"missing", std::move(missing)}};
    });
}

}  // namespace

const VersionRoutes kVersionGetRoutes = {
    {"/api/versions", ListVersions},
    {"/api/versions/{id}/{document}", GetVersionDocument},
};

const VersionRoutes kVersionPostRoutes = {
    {"/api/versions/keep", KeepVersion},
    {"/api/versions/name", NameVersion},
    {"/api/versions/restore", RestoreOneVersion},
};
