#include "webapi/ResourcePath.h"

#include <algorithm>

namespace {

constexpr std::u8string_view kSeparators = u8"/\\";

bool IsSeparator(char8_t c) {
    return c == u8'/' || c == u8'\\';
}

bool IsLetter(char8_t c) {
    return (c >= u8'a' && c <= u8'z') || (c >= u8'A' && c <= u8'Z');
}

/** Length of the root name at the beginning of a path. */
std::size_t RootNameLength(std::u8string_view text) {
    if (text.size() >= 2 && IsLetter(text[0]) && text[1] == u8':') {
        return 2;
    }
    // More than two separators are a root directory, not a server.
    if (text.size() >= 3 && IsSeparator(text[0]) && IsSeparator(text[1]) && !IsSeparator(text[2])) {
        return std::min(text.find_first_of(kSeparators, 2), text.size());
    }
    return 0;
}

}  // namespace

ResourcePath::ResourcePath(std::u8string_view text) {
    const std::size_t rootName = RootNameLength(text);
    m_rootName = text.substr(0, rootName);
    std::replace(m_rootName.begin(), m_rootName.end(), u8'/', u8'\\');
    text.remove_prefix(rootName);
    m_hasRootDirectory = !text.empty() && IsSeparator(text.front());
    text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(kSeparators), text.size());
        m_elements.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
        const std::size_t next = std::min(text.find_first_not_of(kSeparators), text.size());
        if (next > 0 && next == text.size()) {
            m_elements.emplace_back();
        }
        text.remove_prefix(next);
    }
}

ResourcePath ResourcePath::LexicallyNormal() const {
    ResourcePath normal{std::u8string_view()};
    normal.m_rootName = m_rootName;
    normal.m_hasRootDirectory = m_hasRootDirectory;
    std::vector<std::u8string>& kept = normal.m_elements;
    bool endsInFolder = false;  // as "a/", "a/." and "a/b/.." do
    for (const std::u8string& element : m_elements) {
        endsInFolder = element.empty() || element == u8"." || element == u8"..";
        if (element == u8".." && !kept.empty() && kept.back() != u8"..") {
            kept.pop_back();
        } else if (!endsInFolder || (element == u8".." && !m_hasRootDirectory)) {
            kept.push_back(element);
        }
    }
    if (endsInFolder && !kept.empty() && kept.back() != u8"..") {
        kept.emplace_back();
    }
    if (kept.empty() && m_rootName.empty() && !m_hasRootDirectory && !m_elements.empty()) {
        kept.emplace_back(u8".");
    }
    // Parsed again: the text after "./" may be a drive at the beginning.
    return ResourcePath(normal.Text());
}

std::u8string ResourcePath::Text(char8_t separator) const {
    std::u8string text = m_rootName;
    if (m_hasRootDirectory) {
        text += separator;
    }
    for (std::size_t i = 0; i < m_elements.size(); ++i) {
        if (i > 0) {
            text += separator;
        }
        text += m_elements[i];
    }
    return text;
}

const char* RefusalOf(const ResourcePath& name) {
    if (name.IsAbsolute()) {
        return "absolute path is forbidden";
    }
    const auto& elements = name.Elements();
    return std::find(elements.begin(), elements.end(), u8"..") == elements.end() ? nullptr
                                                                                 : "path traversal detected";
}

std::filesystem::path AppendResourcePath(const std::filesystem::path& folder, const ResourcePath& path) {
    std::u8string below;
    for (const std::u8string& element : path.Elements()) {
        below += below.empty() ? element : u8'/' + element;
    }
    return (path.HasRootDirectory() ? folder.root_path() : folder) / std::filesystem::path(below);
}

bool IsPathWithinRoot(const std::filesystem::path& root, const std::filesystem::path& candidate) {
    return std::mismatch(root.begin(), root.end(), candidate.begin(), candidate.end()).first == root.end();
}
