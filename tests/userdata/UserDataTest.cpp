#include "config/JsonFile.h"
#include "include/GlobalConfig.h"
#include "platform/GeneratorId.h"
#include "platform/RavLog.h"
#include "simulation/Machine.h"
#include "tests/config/TestCases.h"
#include "userdata/UserData.h"

#include <algorithm>
#include <list>
#include <thread>
#include <tuple>

namespace {

json Changed(json document, const json& patch) {
    document.merge_patch(patch);
    return document;
}

json Command(int port, const std::string& content) {
    return {{"portIndex", port}, {"controlType", "comInfo"}, {"comInfo", {{"content", content}}}};
}

/** Component interactions: one component, one trigger, these commands. */
json Interactions(const json& commands) {
    json document = json::parse(R"({"kept":1,"componentInteractionInfo":{"componentArr":[
        {"componentId":1,"interactionArr":[{"triggerType":"click"}]}]}})");
    document["componentInteractionInfo"]["componentArr"][0]["interactionArr"][0]["commandArr"] = commands;
    return document;
}

std::string ContentsOf(const CUserData& store) {
    std::string contents;
    for (const SCommandConfig& command : store.GetCommands(1, "click")) {
        contents += command.content;
    }
    return contents;
}

std::string OrderOf(const CUserData& store) {
    std::string ids;
    for (const json& element : store.GetInterfaceConfig()["configList"].get<json::array_t>()) {
        ids += element["nodeId"].dump() + (element["controlType"] == "comInfo" ? "s " : "n ");
    }
    return ids;
}

/** Opens stores, each of which loads what the one before it has saved. */
class UserData : public testing::Test {
  protected:
    class Store : public CUserData {};

    UserData() {
        simulation::SetHome(m_path);
        GetConfigInstance().user_data_path = m_path.string();
    }

    void Write(const std::string& name, const json& text) const { WriteFile(m_path / name, text.dump()); }

    json Saved(const std::string& name) const { return LoadJsonFromFile((m_path / name).string()); }

    const simulation::TemporaryFolder m_folder;
    const fs::path& m_path = m_folder.Path();
    const json m_interfaces = TestCases("interfaces");
};

}  // namespace

TEST_F(UserData, DocumentsHaveDefaultsThenWhatWasStored) {
    constexpr std::tuple<void (CUserData::*)(json), json (CUserData::*)() const,
                         CDocument::State (CUserData::*)()>
        operations[] = {{&CUserData::SetLayout, &CUserData::GetLayout, &CUserData::GetLayoutState},
                        {&CUserData::SetMaterials, &CUserData::GetMaterials, &CUserData::GetMaterialsState},
                        {&CUserData::SetComponentConfig, &CUserData::GetComponentConfig,
                         &CUserData::GetComponentConfigState},
                        {&CUserData::SetInfraredCom, &CUserData::GetInfraredCom, nullptr},
                        {&CUserData::SetApiList, &CUserData::GetApiList, &CUserData::GetApiListState}};
    const json rows = TestCases("documents");
    for (const bool isSecondStart : {false, true}) {
        Store store;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto& [set, get, state] = operations[i];
            const auto expectText = [&store, state = state, get = get] {
                const json document = (store.*get)();
                if (state != nullptr) {
                    EXPECT_EQ((store.*state)()->Json(), document.is_null() ? "" : document.dump());
                    EXPECT_EQ((store.*state)()->Tag(), CDocumentState(document).Tag());
                }
            };
            const json stored = {{"of", rows[i][0]}};
            EXPECT_EQ((store.*get)(), isSecondStart && rows[i][0] != "apiList.json" ? stored : rows[i][1]);
            EXPECT_EQ(Saved(rows[i][0]), isSecondStart ? stored : json());
            expectText();
            (store.*set)(stored);
            EXPECT_EQ((store.*get)(), stored);
            expectText();
        }
    }
    const auto isFolder = [](const fs::directory_entry& entry) { return entry.is_directory(); };
    EXPECT_TRUE(std::any_of(fs::directory_iterator(m_path / "Backup"), {}, isFolder))
        << "no generation is kept";
    WriteFile(m_path / "layout.json", "{\"broken");
    EXPECT_EQ(Store().GetLayout(), json({{"of", "layout.json"}})) << "the backup was not used";
}

TEST_F(UserData, OfWritersThatReplaceTheSameStateOneGetsThrough) {
    constexpr std::tuple<CDocument::State (CUserData::*)(json, const CDocument::StateCheck&),
                         CDocument::State (CUserData::*)()>
        operations[] = {{&CUserData::ReplaceLayout, &CUserData::GetLayoutState},
                        {&CUserData::ReplaceMaterials, &CUserData::GetMaterialsState},
                        {&CUserData::ReplaceComponentConfig, &CUserData::GetComponentConfigState}};
    const auto commands = [](const std::string& content) {
        return Interactions(json::array({Command(1, content)}));
    };
    const auto always = [](const std::string& /*tag*/) { return true; };
    const auto never = [](const std::string& /*tag*/) { return false; };
    Store store;
    for (const auto& [replace, get] : operations) {
        for (int round = 0; round < 50; ++round) {
            const std::string known = (store.*get)()->Tag();
            std::vector<std::string> tags(4);  // of what each writer has stored
            {
                std::list<std::jthread> writers;
                for (std::size_t i = 0; i < tags.size(); ++i) {
                    writers.emplace_back([&, i, replace = replace] {
                        const auto state =
                            (store.*replace)(commands(std::to_string(i)),
                                             [&](const std::string& tag) { return tag == known; });
                        tags[i] = state ? state->Tag() : "";
                    });
                }
            }
            EXPECT_EQ(std::count(tags.begin(), tags.end(), ""), 3);
            EXPECT_EQ(std::count(tags.begin(), tags.end(), (store.*get)()->Tag()), 1);
            (store.*replace)(round, always);
        }
    }
    EXPECT_TRUE(store.ReplaceComponentConfig(commands("new"), always));
    EXPECT_FALSE(store.ReplaceComponentConfig(commands("refused"), never));
    EXPECT_EQ(ContentsOf(store), "new");
}

TEST_F(UserData, LanguageSettings) {
    // setting, language of the system, auto, language in force
    for (const json& row : TestCases("languages")) {
        GetConfigInstance().system_language = row[1];
        Write("setting.json", row[0]);
        Store store;
        EXPECT_EQ(json({store.GetIsAutoLanguage(), store.GetLanguage()}), json({row[2], row[3]})) << row;
        store.SetLanguage(1, false);
    }
    EXPECT_EQ(Saved("setting.json"), json({{"IsAutoLanguage", false}, {"Language", 1}}));
}

TEST_F(UserData, TypesThatStopTheStartAndThoseThatDoNot) {
    for (const json& row : TestCases("errors at start")) {
        SCOPED_TRACE(row);
        Write(row[0], row[1]);
        const std::string failure = FailureOf([] { Store(); });
        EXPECT_EQ(failure.substr(0, failure.find(']') + 1), row[2]) << row;
        fs::remove(m_path / row[0]);
    }
    Write("componentConfig.json",
          Interactions(json::array({Changed(Command(1, ""), {{"interfaceName", 5}})})));
    RavLog::StartLogs(m_path.string(), "info");
    Write("interFace.json", {{"configList", TestCases("interface list")}});
    EXPECT_EQ(FailureOf([] { Store(); }), "");
    for (const json& document : json::array({5, {1}, "configList"})) {
        Write("interFace.json", document);
        Store store;
        store.SetNetPortConfig(1, {});
        EXPECT_EQ(OrderOf(store), "1n ") << document;
    }
    EXPECT_EQ(json::parse(ReadFile(m_path / "interFace.json.broken.2"))["configList"],
              TestCases("interface list"));
    EXPECT_EQ(ReadFile(m_path / "interFace.json.broken.5"), "\"configList\"");
    RavLog::StopLogs();
    const std::string logs = ReadFile(m_path / "System.log") + ReadFile(m_path / "Server.log");
    for (const char* text :
         {"interFace.json holds 4 of 9 elements", "interFace.json holds no array configList",
          "[[Load File] Failed UpdateCmdMap!] [[json.exception.type_error.302] "}) {
        EXPECT_NE(logs.find(text), std::string::npos) << text << logs;
    }
}

TEST_F(UserData, InterfaceValuesAreReadAndWrittenBack) {
    for (const json& row : TestCases("interface values")) {  // kind, key, value, value written; none: dropped
        json element = m_interfaces[row[0]];
        json& value = element[row[0].get<std::string>()][row[1].get<std::string>()];
        value = row[2];
        Write("interFace.json", {{"configList", {element, nullptr}}, {"kept", 1}});
        testing::internal::CaptureStdout();
        {
            Store store;
            store.SetNetPortConfig(999, {});
            store.RemoveInterface(999, CUserData::RemovalDeleted);
        }
        const char* line = row[0] == "comInfo" ? "串口配置解析异常: [json." : "网口配置解析异常: [json.";
        const bool isDropped = testing::internal::GetCapturedStdout().find(line) != std::string::npos;
        EXPECT_EQ(isDropped, row.size() == 3) << row;
        value = row.back();
        const json expected = isDropped ? json::array() : json::array({element});
        EXPECT_EQ(Saved("interFace.json").dump(), json({{"configList", expected}, {"kept", 1}}).dump())
            << row;
    }
}

// Later records win, in the first one's place; unusable elements are dropped but keep their ids.
TEST_F(UserData, OrderAndIdsOfInterfaces) {
    Write("interFace.json", {{"configList", TestCases("interface list")}});
    Store store;
    EXPECT_EQ(CGeneratorId::getInstance()->GetId(), 6001);
    SSerialPortConfig record;
    ASSERT_TRUE(store.GetSerialPortConfig(3, record));
    EXPECT_EQ(record.comName, "later");
    store.SetSerialPortConfig(6, record);
    store.RemoveInterface(3, CUserData::RemovalReplaced);
    EXPECT_EQ(OrderOf(store), "3s 2n 5s 6s ");
    store.SetSerialPortConfig(3, record);
    store.RemoveInterface(77, CUserData::RemovalDeleted);
    store.RemoveInterface(2, CUserData::RemovalDeleted);
    EXPECT_EQ(OrderOf(store), "5s 6s 3s ");
    store.ClearInterfaces();
    EXPECT_EQ(store.GetInterfaceConfigState()->Json(), R"({"configList":[]})");
}

TEST_F(UserData, QuestionsBeforeAnInterfaceIsStored) {
    const json &serial = m_interfaces["comInfo"], &net = m_interfaces["netPortInfo"];
    Write("interFace.json", {{"configList", {serial, net}}});
    const Store store;
    for (const json& row : TestCases("names")) {
        SCOPED_TRACE(row);
        EXPECT_EQ(store.IsInterfaceNameUsed(row[0], row[1], row[2]), row[3]);
    }
    for (const json& row : TestCases("serial duplicates")) {
        SCOPED_TRACE(row);
        SSerialPortConfig record;
        ASSERT_TRUE(ParseSerialPortRequest(Changed(serial["comInfo"], row[0]), record));
        EXPECT_EQ(store.IsSerialConfigDuplicate(record, false, 3), row[1]);
        EXPECT_FALSE(store.IsSerialConfigDuplicate(record, true, 3));
    }
    for (const json& row : TestCases("network duplicates")) {
        SCOPED_TRACE(row);
        SNetPortConfig record;
        ASSERT_TRUE(ParseNetPortRequest(Changed(net["netPortInfo"], row[0]), record));
        EXPECT_EQ(store.IsNetConfigDuplicate(record, false, 2), row[1]);
        EXPECT_FALSE(store.IsNetConfigDuplicate(record, true, 2));
    }
}

TEST_F(UserData, CommandsAreReadReplacedAndKept) {
    for (const json& row : TestCases("commands")) {  // change of a command, its fields; none: it is left out
        SCOPED_TRACE(row);
        SCommandConfig c;
        ASSERT_EQ(ParseCommand(Changed(Command(5, "x"), row[0]), c), row.size() == 2);
        const json fields = {c.portIndex,   c.interfaceName, c.controlType, c.content,
                             c.commandName, c.contentFormat, c.asciiEncode};
        EXPECT_TRUE(row.size() < 2 || fields == row[1]) << fields;
    }
    Store store;
    store.SetComponentConfig(Interactions(json::array({Command(5, "old")})));
    for (const json& patch : TestCases("wrong types")) {
        const json document = Interactions(json::array({Changed(Command(5, "new"), patch)}));
        EXPECT_THROW(store.SetComponentConfig(document), json::type_error) << patch;
        EXPECT_EQ(ContentsOf(store), "old");
        EXPECT_EQ(store.GetComponentConfig(), document);
    }
    // one after the other, and what is in force then
    for (const json& row : TestCases("component interactions")) {
        SCOPED_TRACE(row);
        store.SetComponentConfig(row[0]);
        EXPECT_EQ(ContentsOf(store), row[1]) << row;
    }
}

TEST_F(UserData, ADeletedInterfaceTakesItsCommandsAlong) {
    const json noContent = Changed(Command(7, ""), {{"comInfo", {{"content", nullptr}}}});
    const json noPort = Changed(Command(5, "never read"), {{"portIndex", nullptr}});
    auto store = std::make_unique<Store>();
    store->SetNetPortConfig(5, {});
    store->SetComponentConfig(
        Interactions({Command(5, "a"), Command(6, "b"), noPort, Command(5, "c"), noContent}));
    store->RemoveInterface(5, CUserData::RemovalReplaced);
    EXPECT_EQ(ContentsOf(*store), "abc");
    EXPECT_EQ(store->GetComponentConfigState()->Json(), store->GetComponentConfig().dump());
    store->SetNetPortConfig(5, {});
    store->RemoveInterface(5, CUserData::RemovalDeleted);
    store->ClearInterfaces();
    EXPECT_EQ(ContentsOf(*store), "b");
    EXPECT_EQ(store->GetComponentConfig(), Interactions({Command(6, "b"), noPort}));
    EXPECT_EQ(store->GetComponentConfigState()->Json(), store->GetComponentConfig().dump());
    store->RemovePortCommands(6);
    store.reset();
    EXPECT_EQ(Saved("componentConfig.json"), Interactions(json::array({noPort})));
}

// Minutes, should each command be looked for among all records of its trigger, or each interaction read them.
TEST_F(UserData, ADeletedInterfaceLeavesManyCommandsInOnePass) {
    constexpr int count = 300000;
    json commands = json::array();
    std::vector<SCommandConfig> records;
    for (int port = 0; port < count; ++port) {
        commands.push_back({{"portIndex", port}});
        records.emplace_back().portIndex = count - port;
    }
    json document = Interactions(commands)["componentInteractionInfo"];
    json& interactions = document["componentArr"][0]["interactionArr"];
    interactions.insert(interactions.end(), 20000, {{"triggerType", "click"}, {"commandArr", json::array()}});
    CmdMap map;
    map[1]["click"] = std::move(records);
    PruneCommandArrays(document, map);
    const json& kept = interactions[0]["commandArr"];
    ASSERT_EQ(kept.size(), count - 1U);
    EXPECT_EQ(kept.front()["portIndex"], 1);
}

// Two saves and a deletion that has nothing to do with them: what is in force is what was saved last.
TEST_F(UserData, ChangesAtTheSameMomentLeaveDocumentAndCommandsAlike) {
    Store store;
    json documents[2];
    for (int i = 0; i < 2; ++i) {
        json commands(60, Command(900, "-"));
        commands.push_back(Command(2, std::to_string(i)));
        documents[i] = Interactions(commands);
    }
    for (int round = 0; round < 300; ++round) {
        store.SetNetPortConfig(1, {});
        {
            const std::jthread one([&] { store.SetComponentConfig(documents[0]); });
            const std::jthread other([&] { store.SetComponentConfig(documents[1]); });
            store.RemoveInterface(1, CUserData::RemovalDeleted);
        }
        const bool isOther = store.GetComponentConfig() == documents[1];
        ASSERT_EQ(store.GetComponentConfig(), documents[isOther ? 1 : 0]) << round;
        ASSERT_EQ(ContentsOf(store).back(), isOther ? '1' : '0') << round;
    }
}

// Of choices at the same moment one is in force, whole, and on the disk.
TEST_F(UserData, LanguagesChosenAtTheSameMomentLeaveOneChoice) {
    for (int round = 0; round < 50; ++round) {
        auto store = std::make_unique<Store>();
        {
            const std::jthread other([&] {
                for (int choice = 1; choice < 60; choice += 2) {
                    store->SetLanguage(choice, false);
                }
            });
            for (int choice = 0; choice < 60; choice += 2) {
                store->SetLanguage(choice, true);
            }
        }
        const int language = store->GetLanguage();
        EXPECT_EQ(store->GetIsAutoLanguage(), language % 2 == 0) << language;
        store.reset();
        ASSERT_EQ(Saved("setting.json"),
                  json({{"IsAutoLanguage", language % 2 == 0}, {"Language", language}}))
            << round;
    }
}

// All operations at once; what is on the disk at the end is what was in memory.
TEST_F(UserData, BearsConcurrentUse) {
    auto store = std::make_unique<Store>();
    {
        std::list<std::jthread> threads;
        for (int i = 1; i <= 4; ++i) {
            threads.emplace_back([&store, i] {
                for (int round = 0; round < 40; ++round) {
                    store->SetNetPortConfig(i, {});
                    store->SetComponentConfig(Interactions(json::array({Command(i, "x")})));
                    EXPECT_LE(ContentsOf(*store).size(), 1U);
                    store->IsInterfaceNameUsed("a", false, 0);
                    store->SetLanguage(round, false);
                    store->RemoveInterface(i, CUserData::RemovalDeleted);
                    EXPECT_TRUE(store->GetInterfaceConfigState() && store->GetComponentConfigState());
                }
                store->SetSerialPortConfig(i, {});
            });
        }
    }
    EXPECT_EQ(OrderOf(*store).size(), 12U);
    const json interfaces = store->GetInterfaceConfig();
    EXPECT_EQ(store->GetInterfaceConfigState()->Json(), interfaces.dump());
    store.reset();
    EXPECT_EQ(Saved("interFace.json"), interfaces);
}
