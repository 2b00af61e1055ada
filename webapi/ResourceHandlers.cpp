// Files that are served by name: the entry page and the folder of resources.

#include "include/GlobalConfig.h"
#include "platform/FileNames.h"
#include "platform/FileStreams.h"
#include "platform/Folders.h"
#include "platform/Paths.h"
#include "platform/PinnedFile.h"
#include "platform/Utf8.h"
#include "server/LogText.h"
#include "server/RouterMgr.h"
#include "webapi/ResourcePath.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <hv/hpath.h>
#include <hv/hurl.h>

namespace {

namespace fs = std::filesystem;

constexpr int kMissing = 422;
constexpr const char* kEscapedRoot = "resource path escaped root";

std::string ResolveContentType(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    const std::string suffix = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    const std::string type = suffix.empty() ? "" : http_content_type_str_by_suffix(suffix.c_str());
    return type.empty() ? "application/octet-stream" : type;
}

/** As weakly_canonical, but the error's text omits the path, which may hold anything. */
fs::path Canonical(const fs::path& path) {
    std::error_code error;
    fs::path canonical = fs::weakly_canonical(path, error);
    if (error) {
        throw std::system_error(error, "a path can't be resolved");
    }
    return canonical;
}

bool Exists(const fs::path& path) {
    std::error_code error;
    const bool exists = fs::exists(path, error);
    if (error) {
        throw std::system_error(error, "a file can't be looked at");
    }
    return exists;
}

/** Whether a name means a device of Windows, which no file can be. */
bool NamesDevice(const ResourcePath& name) {
    const auto& elements = name.Elements();
    return std::any_of(elements.begin(), elements.end(), [](const std::u8string& element) {
        return IsDeviceName({reinterpret_cast<const char*>(element.data()), element.size()});
    });
}

/** Whether a path with this root name can be on the drive of the folder. */
bool IsOnDriveOf(const fs::path& folder, const ResourcePath& name) {
    return name.RootName().empty() || name.RootName() == folder.root_name().u8string();
}

/** A folder has no body, and anything else that is not a file must not be waited for. */
bool IsRegularFile(const PinnedFile& file) {
    std::error_code ignored;
    return fs::is_regular_file(PathFromNarrow(file.OpenName()), ignored);
}

int Refuse(HttpResponse* response, const SRequestTrace& trace, const char* reason) {
    WriteOperationLog(trace.client, trace.path, FormatLogText(CodeBadRequest, reason));
    SResponseData empty;
    return RouterMgr::WriteEnvelope(response, CodeBadRequest, empty);
}

int Finish(const SRequestTrace& trace, int status) {
    WriteOperationLog(trace.client, trace.path, FormatLogText(status));
    return status;
}

/**
 * Answers with the file of this name, which is still percent-encoded.
 *
 * The names on the way to the file can change while they are checked: a link can replace a folder. So the
 * file is pinned, its real place is checked once more, and exactly this file is opened, without using a name
 * again.
 */
int AnswerResource(const std::string& fileName, HttpResponse* response, const SRequestTrace& trace) {
    const ResourcePath name = ResourcePath(Utf8FromBytes(HUrl::unescape(fileName))).LexicallyNormal();
    if (const char* refusal = RefusalOf(name)) {
        return Refuse(response, trace, refusal);
    }
    const fs::path root = Canonical(Utf8FromBytes(GetConfigInstance().resource_path));
    if (!IsOnDriveOf(root, name)) {
        return Refuse(response, trace, kEscapedRoot);
    }
    const fs::path candidate = Canonical(AppendResourcePath(root, name));
    if (!IsPathWithinRoot(root, candidate)) {
        return Refuse(response, trace, kEscapedRoot);
    }
    if (NamesDevice(name) || !Exists(candidate)) {
        return Finish(trace, kMissing);
    }
    const PinnedFile folder(root);
    const PinnedFile file(candidate);
    // Without the folder, for example when no descriptors are left, every place would count as one below it.
    const fs::path realRoot = folder.RealPath();
    if (file && (realRoot.empty() || !IsPathWithinRoot(realRoot, file.RealPath()))) {
        return Refuse(response, trace, kEscapedRoot);
    }
    if (file && IsRegularFile(file)) {
        response->File(file.OpenName().c_str());  // one that may not be read: no body
    }
    response->SetContentType(ResolveContentType(fileName).c_str());  // after File, which may set another
    response->SetHeader("Cache-Control", "public, max-age=3600");
    return Finish(trace, HTTP_STATUS_OK);
}

int Fail(HttpResponse* response, http_status status, const char* text) {
    response->status_code = status;
    response->SetBody(text);
    return status;
}

}  // namespace

int RouterMgr::IndexPageHandler(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    WriteOperationLog(MakeClientId(*request), request->path, std::string());
    return response->File(GetConfigInstance().index_path.c_str());
}

int RouterMgr::GetResourceHandler(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    const SRequestTrace trace{MakeClientId(*request), request->path, {}};
    WriteOperationLog(trace.client, trace.path, std::string());
    const std::string fileName = request->GetParam("fileName");
    if (fileName.empty()) {
        SResponseData empty;
        return WriteEnvelope(response, CodeBadRequest, empty);
    }
    try {
        return AnswerResource(fileName, response, trace);
    } catch (const std::exception& error) {
        return Refuse(response, trace, error.what());
    }
}

int RouterMgr::FallbackFileHandler(HttpRequest* /*request*/, HttpResponse* response) {
    const std::string path = HPath::join(GetModuleDirectory(), "test.html");
    std::ifstream file = OpenTextForReading(path);
    if (!file) {
        return Fail(response, HTTP_STATUS_NOT_FOUND, "File not found");
    }
    constexpr std::size_t longestPath = 259;  // of the size's look-up
    std::error_code error;
    const std::uintmax_t size = fs::file_size(PathFromNarrow(path.substr(0, longestPath)), error);
    std::string body(error ? 0 : static_cast<std::size_t>(size), '\0');
    file.read(body.data(), static_cast<std::streamsize>(body.size()));
    if (body.empty() || file.gcount() == 0) {
        return Fail(response, HTTP_STATUS_INTERNAL_SERVER_ERROR, "Failed to read file");
    }
    response->SetContentType(http_content_type_enum(ResolveContentType(path).c_str()));
    response->SetBody(body);
    return HTTP_STATUS_OK;
}
