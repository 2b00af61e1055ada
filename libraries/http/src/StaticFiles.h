#pragma once

#include "libraries/http/src/FileAccess.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <hv/HttpService.h>

namespace hv::internal {

/** The part of a file that a reply carries. */
struct FilePart {
    FileHandle file;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

/**
 * Name of a file below a static folder, from a path as sent without its query: decoded, "/" at the end
 * completed by index.html. Nothing when the path could lead astray on some system: "..", empty elements,
 * encoded slashes, backslashes, colons (drives, alternate streams), control characters, device names, blanks
 * or dots at an end.
 */
std::optional<std::string> StaticFileName(std::string_view path);

/** Whether there is a file for a request; Unknown: only the disk can answer that. */
enum class FileFound { No, Yes, Unknown };

/** The static folders of a service. Any thread. */
class StaticFiles {
  public:
    explicit StaticFiles(std::vector<HttpStaticFolder> folders) : m_folders(std::move(folders)) {}

    /**
     * Answers a request with a file: status and headers go into the response, including 304, 405, 412 and
     * 416. The response is changed only if there is such a file.
     */
    FileFound Answer(const HttpRequest& request, std::string_view path, HttpResponse& response,
                     FilePart& part, DiskWait wait) const;

  private:
    std::vector<HttpStaticFolder> m_folders;
};

}  // namespace hv::internal
