// Any name, against the real folder and its real links: nothing from outside is handed out.
#include "server/RouterMgr.h"
#include "tests/fuzz/FuzzHome.h"
#include "tests/fuzz/FuzzTarget.h"
#include "webapi/ResourcePath.h"

namespace {

/** A folder of resources with a secret beside it, and links to it. */
struct Installation {
    Installation() {
        simulation::WriteFile(folder.Path() / "secret", "secret");
        simulation::WriteFile(folder.Path() / "Resource/a/b", "inside");
        std::filesystem::create_symlink("..", folder.Path() / "Resource/up");
        std::filesystem::create_symlink("../secret", folder.Path() / "Resource/out");
        FuzzHome();
        GetConfigInstance().resource_path = (folder.Path() / "Resource").string();
    }
    simulation::TemporaryFolder folder;
};

}  // namespace

FUZZ_TARGET(resource) {
    static const Installation installation;
    HttpRequest request;
    request.query_params["fileName"] = bytes;
    HttpResponse response;
    const int status = RouterMgr::GetResourceHandler(&request, &response);
    Require(status == 200 || status == 422);
    Require(response.body.empty() || response.body == "inside" || response.body[0] == '{');

    const ResourcePath normal = ResourcePath(std::u8string(bytes.begin(), bytes.end())).LexicallyNormal();
    // What becomes a drive when the elements before it go, "a/../C:./b", is not looked into again.
    Require(!normal.RootName().empty() || normal.LexicallyNormal().Text() == normal.Text());
}
