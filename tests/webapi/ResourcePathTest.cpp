// Names of resources as they come in requests: what they mean in the grammar of Windows, on every system.

#include "platform/Utf8.h"
#include "simulation/TableText.h"
#include "simulation/TemporaryFolder.h"
#include "webapi/ResourcePath.h"

#include <stdexcept>

#include <gtest/gtest.h>
#include <hv/hurl.h>
#include <nlohmann/json.hpp>

namespace {

nlohmann::json Table(const char* name) {
    return nlohmann::json::parse(simulation::ReadFile(RESOURCE_PATHS)).at(name);
}

ResourcePath PathOf(const std::string& name) {
    const std::string text = HUrl::unescape(simulation::Expanded(name));
    return ResourcePath(Utf8FromBytes(text)).LexicallyNormal();
}

TEST(ResourcePath, HasItsShortestForm) {
    for (const auto& [name, form] : Table("forms").get<std::vector<std::pair<std::string, std::string>>>()) {
        SCOPED_TRACE(name);
        const ResourcePath path = PathOf(name);
        const std::u8string text = path.Text();
        EXPECT_EQ(std::string(text.begin(), text.end()), form);
        EXPECT_EQ(RefusalOf(path), nullptr);
    }
}

TEST(ResourcePath, IsRefusedForWhatItsTextSays) {
    const nlohmann::json table = Table("refused");
    for (const auto& [reason, names] : table.items()) {
        for (const std::string name : names) {
            SCOPED_TRACE(name);
            if (reason == "no text") {
                EXPECT_THROW(PathOf(name), std::range_error);
                continue;
            }
            const char* const refusal = RefusalOf(PathOf(name));
            EXPECT_EQ(refusal == nullptr ? "" : refusal, reason);
        }
    }
}

TEST(ResourcePath, IsAppendedToTheFolderOrToTheRootOfItsDrive) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "Resource";
    EXPECT_EQ(AppendResourcePath(folder, PathOf("sub%5Cdeep.txt")), folder / "sub" / "deep.txt");
    EXPECT_EQ(AppendResourcePath(folder, PathOf("%5Cetc%5Cpasswd")), folder.root_path() / "etc" / "passwd");
    EXPECT_TRUE(IsPathWithinRoot(folder, folder));
    EXPECT_TRUE(IsPathWithinRoot(folder, folder / "sub"));
    EXPECT_FALSE(IsPathWithinRoot(folder, folder.parent_path() / "Resource-other" / "x.txt"));
}

}  // namespace
