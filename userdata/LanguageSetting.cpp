#include "userdata/LanguageSetting.h"

#include "config/JsonNumber.h"

SLanguageSetting ParseLanguageSetting(const nlohmann::json& document, std::int32_t systemLanguage,
                                      std::int32_t defaultLanguage) {
    SLanguageSetting setting{.isAuto = true, .language = defaultLanguage};
    if (!document.empty()) {
        setting.isAuto = document.value("IsAutoLanguage", true);
        if (const auto language = document.find("Language"); language != document.end()) {
            setting.language = JsonToInt32(*language);
        }
    }
    if (setting.isAuto) {
        setting.language = systemLanguage;
    }
    return setting;
}
