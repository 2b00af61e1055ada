#pragma once

#include <string>
#include <string_view>

namespace hv::internal {

/** Content type of a file name by its suffix in any case; "application/octet-stream" when unknown. */
std::string ContentTypeOfFile(std::string_view fileName);

/** The type with "; charset=utf-8" behind it where it is text: in files that is UTF-8. */
std::string WithCharset(const std::string& contentType);

/** Whether bodies of this content type shrink under compression. */
bool IsCompressible(std::string_view contentType);

}  // namespace hv::internal
