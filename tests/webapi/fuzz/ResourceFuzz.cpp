// Any name, against the real folder and its real links: nothing from outside is handed out.
#include "include/GlobalConfig.h"
#include "server/RouterMgr.h"
#include "simulation/TemporaryFolder.h"
#include "webapi/ResourcePath.h"

#include <cstdint>
#include <cstdlib>

namespace {

/** A folder of resources with a secret beside it, and links to it. */
struct Installation {
    Installation() {
        simulation::WriteFile(folder.Path() / "secret", "secret");
        simulation::WriteFile(folder.Path() / "Resource/a/b", "inside");
        std::filesystem::create_symlink("..", folder.Path() / "Resource/up");
        std::filesystem::create_symlink("../secret", folder.Path() / "Resource/out");
        setenv("HOME", folder.Path().c_str(), 1);
        GetConfigInstance().resource_path = (folder.Path() / "Resource").string();
    }
    simulation::TemporaryFolder folder;
};

void Check(bool good) {
    if (!good) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Installation installation;
    HttpRequest request;
    request.query_params["fileName"].assign(data, data + size);
    HttpResponse response;
    const int status = RouterMgr::GetResourceHandler(&request, &response);
    Check(status == 200 || status == 422);
    Check(response.body.empty() || response.body == "inside" || response.body[0] == '{');

    const ResourcePath normal = ResourcePath(std::u8string(data, data + size)).LexicallyNormal();
    // What becomes a drive when the elements before it go, "a/../C:./b", is not looked into again.
    Check(!normal.RootName().empty() || normal.LexicallyNormal().Text() == normal.Text());
    return 0;
}
