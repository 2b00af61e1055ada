#include "equipment/Health.h"

#include "include/GlobalConfig.h"
#include "platform/ProcessMemory.h"
#include "platform/RavLog.h"
#include "server/ClientsManager.h"

namespace {

const std::chrono::system_clock::time_point kStart = std::chrono::system_clock::now();

}  // namespace

std::map<std::string, int> SHealth::InterfacesByState() const {
    std::map<std::string, int> counts;
    for (const EnPortState state : {EnPortState::Closed, EnPortState::Connecting, EnPortState::Open,
                                    EnPortState::Listening, EnPortState::Failed}) {
        counts[NameOf(state)] = 0;
    }
    for (const SInterfaceReport& interface : interfaces) {
        ++counts[NameOf(interface.port.state)];
    }
    return counts;
}

SHealth HealthNow() {
    return {.version = GetConfigInstance().version,
            .since = kStart,
            .saves = CUserData::GetInstance().GetSaveCounts(),
            .lostRecords = RavLog::LostRecords(),
            .channels = CClientsManager::GetInstance()->Count(),
            .memory = ResidentMemory(),
            .interfaces = InterfaceReports()};
}

nlohmann::json MakeHealth(const SHealth& health) {
    using std::chrono::milliseconds;
    return {{"version", health.version},
            {"upSince", std::chrono::floor<milliseconds>(health.since.time_since_epoch()).count()},
            {"savesPending", health.saves.pending},
            {"savesFailing", health.saves.failing},
            {"logRecordsLost", health.lostRecords},
            {"interfaces", health.InterfacesByState()},
            {"channels", health.channels},
            {"memory", health.memory}};
}
