#include "equipment/values/ConfigStore.h"

#include "equipment/values/EquipmentValues.h"
#include "platform/RavLog.h"
#include "userdata/UserData.h"

namespace {

using nlohmann::json;

/** Held while a document is replaced together with what follows it. Taken before all others. */
CMutex g_changing;

const CDocument::State& StateWithoutDevices() {
    static const CDocument::State state =
        std::make_shared<const CDocumentState>(json{{"version", 1}, {"devices", json::array()}});
    return state;
}

}  // namespace

void StartEquipmentValues() {
    CEquipmentValues& values = CEquipmentValues::Instance();
    CDocument& document = CUserData::GetInstance().EquipmentDocument();
    const CLock changing(g_changing);
    try {
        values.Configure(ParseEquipmentConfig(document.Copy()));
    } catch (const std::exception& problem) {
        document.SetAside();
        RavLog::WriteSystemLog(RavLog::Error, "values",
                               document.Path() + " is not used: " + problem.what() +
                                   " The file stays as it is until another document is stored; it is kept as "
                                   ".broken then.");
    }
}

CDocument::State EquipmentConfigState() {
    CDocument::State state = CUserData::GetInstance().EquipmentDocument().GetState();
    return state->Json().empty() ? StateWithoutDevices() : state;
}

CDocument::State StoreEquipmentConfig(json document, const CDocument::StateCheck& check) {
    SEquipmentConfig config = ParseEquipmentConfig(document);
    const CLock changing(g_changing);
    CDocument::State stored = CUserData::GetInstance().EquipmentDocument().ReplaceIf(
        std::move(document),
        [&](const std::string&) { return check == nullptr || check(EquipmentConfigState()->Tag()); });
    if (stored) {
        CEquipmentValues::Instance().Configure(std::move(config));
    }
    return stored;
}

bool StoreEquipmentConfigWith(json document, const CDocument::State& present,
                              const std::function<bool()>& others) {
    SEquipmentConfig config = ParseEquipmentConfig(document);
    const CLock changing(g_changing);
    CDocument& stored = CUserData::GetInstance().EquipmentDocument();
    if (stored.GetState()->Tag() != present->Tag() || !others()) {
        return false;
    }
    stored.Set(std::move(document));
    CEquipmentValues::Instance().Configure(std::move(config));
    return true;
}
