#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/**
 * A path in the grammar of Windows, on every system. Only the text counts; the disk is never accessed.
 *
 * Slashes and backslashes are separators. A drive (C:), or two separators and a server name, are a root name.
 * A separator after that, or at the beginning, is the root directory. The rest are elements; an empty last
 * one stands for a separator at the end.
 */
class ResourcePath {
  public:
    explicit ResourcePath(std::u8string_view text);

    /**
     * The path in its shortest form: "." and empty elements are removed, and so is each ".." with the element
     * before it. ".." directly below the root directory is removed too. "." when nothing is left.
     */
    ResourcePath LexicallyNormal() const;

    /**
     * Whether it means the same place whatever it is appended to: it has a root name and a root directory.
     */
    bool IsAbsolute() const { return !m_rootName.empty() && m_hasRootDirectory; }

    const std::u8string& RootName() const { return m_rootName; }
    bool HasRootDirectory() const { return m_hasRootDirectory; }
    const std::vector<std::u8string>& Elements() const { return m_elements; }

    /** The text of the path, with the given separator. */
    std::u8string Text(char8_t separator = u8'\\') const;

  private:
    std::u8string m_rootName;
    bool m_hasRootDirectory = false;
    std::vector<std::u8string> m_elements;
};

/** The reason why a name is refused before the disk is accessed, or null. @param name  in its shortest form
 */
const char* RefusalOf(const ResourcePath& name);

/**
 * Appends a path to a folder, as the append operator of Windows paths does: a path with a root directory goes
 * to the root of the folder's drive.
 * @param path  with no root name, or with the folder's own
 */
std::filesystem::path AppendResourcePath(const std::filesystem::path& folder, const ResourcePath& path);

/**
 * Whether a path begins with all elements of the root, which is true for the root itself. Compared exactly,
 * as texts.
 */
bool IsPathWithinRoot(const std::filesystem::path& root, const std::filesystem::path& candidate);
