#pragma once

#include <string>
#include <string_view>

namespace hv::internal {

/** Content type of a file name by its suffix, ignoring case; "application/octet-stream" when unknown. */
std::string ContentTypeOfFile(std::string_view fileName);

/** The type, with "; charset=utf-8" appended if it is a text type: text files are UTF-8. */
std::string WithCharset(const std::string& contentType);

/** Whether bodies of this content type shrink under compression. */
bool IsCompressible(std::string_view contentType);

}  // namespace hv::internal
