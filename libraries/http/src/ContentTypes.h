#pragma once

#include <string>
#include <string_view>

namespace hv::internal {

/** Content type of a file name by its suffix in any case; "application/octet-stream" when unknown. */
std::string ContentTypeOfFile(std::string_view fileName);

/** Whether bodies of this content type shrink under compression. */
bool IsCompressible(std::string_view contentType);

}  // namespace hv::internal
