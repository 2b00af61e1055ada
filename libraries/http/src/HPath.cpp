#include <hv/hpath.h>

std::string HPath::join(const std::string& dir, const std::string& filename) {
    char separator = '/';
#if defined(_WIN32)
    if (dir.find('\\') != std::string::npos) {
        separator = '\\';
    }
#endif
    if (dir.empty() || dir.back() != separator) {
        return dir + separator + filename;
    }
    return dir + filename;
}
