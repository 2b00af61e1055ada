#include "config/DocumentBackup.h"
#include "config/JsonFile.h"
#include "tests/config/FileRecorder.h"
#include "tests/config/TestCases.h"

namespace {

json LoadIfThere(const std::string& path) {
    return fs::exists(path) ? LoadJsonFromFile(path) : json();
}

}  // namespace

// A cut after each step of the save, in each way: the start finds the state before the save or the new one,
// never an older one or none; and the new one from the first moment on in which a cut leaves it.
TEST(PowerCut, LeavesTheStateBeforeTheSaveOrTheNewOne) {
    const struct {
        const char* name;
        json saved;          ///< saved before; null: nothing
        const char* edit;    ///< what the user has made of the document since; null: nothing, "": deleted
        std::size_t growth;  ///< length of a text in the new state
    } rows[] = {
        {"a first save", nullptr, nullptr, 10},
        {"a second save", {{"state", "old"}}, nullptr, 10},
        {"a save that grows", {{"state", "old"}}, nullptr, 20000},
        {"a save that shrinks", {{"state", "old"}, {"text", std::string(20000, 'x')}}, nullptr, 10},
        {"a save after a reset", {{"state", "old"}}, "", 10},
        {"a save after the user's change", {{"state", "old"}}, R"({"state":"the user's"})", 10},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const simulation::TemporaryFolder folder;
        const fs::path data = folder.Path() / "data";
        const std::string path = (data / "layout.json").string();
        fs::create_directory(data);
        if (!row.saved.is_null()) {
            SaveJsonWithBackup(row.saved, path);
        }
        if (row.edit != nullptr) {
            fs::remove(path);
        }
        if (row.edit != nullptr && *row.edit != '\0') {
            WriteFile(path, row.edit);
        }
        const json before = LoadIfThere(path);
        const json after = {{"state", "new"}, {"text", std::string(row.growth, 'n')}};
        const CDiskModel start(data);
        StartRecording(data);
        SaveJsonWithBackup(after, path);
        const std::vector<SFileStep> steps = StopRecording();
        ASSERT_GT(steps.size(), 10U);
        for (const EnCut cut : {EnCut::LosesAll, EnCut::LosesBytes, EnCut::LosesNone}) {
            CDiskModel disk = start;
            bool isNew = false;
            for (std::size_t done = 0; done <= steps.size(); ++done) {
                SCOPED_TRACE("cut " + std::to_string(static_cast<int>(cut)) + " after step " +
                             std::to_string(done) + " of " + std::to_string(steps.size()));
                disk.RestoreTo(data, cut);
                const json found = LoadJsonFromFile(RestoreFromBackup(path));
                EXPECT_TRUE(found == after || (found == before && !isNew)) << found.dump().substr(0, 80);
                EXPECT_EQ(LoadIfThere(path), found) << "the second start finds another state";
                isNew = isNew || found == after;
                if (done < steps.size()) {
                    disk.Do(steps[done]);
                }
            }
            EXPECT_TRUE(isNew) << "a save that was complete is lost";
        }
    }
}
