// The routes for information about the server, and for the user's language.

#include "include/GlobalConfig.h"
#include "server/RouterMgr.h"
#include "userdata/UserData.h"

#include <webapi/Maker.h>

namespace {

constexpr int kChinese = 0;
constexpr int kEnglish = 1;
constexpr const char* kChineseText = "zhCN";
constexpr const char* kEnglishText = "en";

nlohmann::json VersionObject() {
    const SGlobalConfig& config = GetConfigInstance();
    const bool isEnglish = CUserData::GetInstance().GetLanguage() == kEnglish;
    return {
        {"softwareName", config.softwareName},
        {"version", config.version},
        {"buildVersion", config.buildVersion},
        {"buildTime", config.buildTime},
        {"companyInfo",
         {{"name", isEnglish ? kMakerNameEnglish : kMakerNameChinese},
          {"website", isEnglish ? kMakerWebsiteEnglish : kMakerWebsiteChinese}}},
        {"contactInformation", {{"phone", kMakerPhone}, {"email", kMakerEmail}}},
    };
}

nlohmann::json LanguageObject() {
    const CUserData& data = CUserData::GetInstance();
    return {{"language", data.GetLanguage() == kChinese ? kChineseText : kEnglishText},
            {"isAuto", data.GetIsAutoLanguage()}};
}

}  // namespace

int RouterMgr::GetServerVersion(HttpRequest* request, HttpResponse* response) {
    return HandleRead(request, response,
                      [](auto& content, auto& /*trace*/) { content.data = VersionObject(); });
}

int RouterMgr::GetUserLanguage(HttpRequest* request, HttpResponse* response) {
    return HandleRead(request, response,
                      [](auto& content, auto& /*trace*/) { content.data = LanguageObject(); });
}

int RouterMgr::SetUserLanguage(HttpRequest* request, HttpResponse* response) {
    return HandleWrite(request, response, {.requiredKey = "data"}, [response](auto& body, auto& trace) {
        nlohmann::json data = std::move(body["data"]);
        const auto text = data["language"].template get<std::string>();
        const bool isAuto = data["isAuto"].template get<bool>();
        int language = GetConfigInstance().system_language;
        if (!isAuto) {
            language = text == kChineseText ? kChinese : kEnglish;
        }
        CUserData::GetInstance().SetLanguage(language, isAuto);
        return Respond(response, CodeSuccess, trace);
    });
}
