#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/**
 * A path in the grammar of Windows, on every system. Only the text counts, the disk is never asked.
 *
 * Slashes and backslashes separate. A drive (C:) or two separators and a server name are a root name; a
 * separator behind it, or at the beginning, is the root directory. What follows are elements; an empty last
 * one stands for a separator at the end.
 */
class ResourcePath {
  public:
    explicit ResourcePath(std::u8string_view text);

    /**
     * The same path in its shortest form: without "." and without empty elements, each ".." and the element
     * before it left out, ".." directly below the root directory left out; "." when nothing is left.
     */
    ResourcePath LexicallyNormal() const;

    /** Whether it names one place whatever it is appended to: it has a root name and a root directory. */
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

/**
 * The text of a path below a folder, as the append operator of Windows paths makes it: a path with a root
 * directory goes to the root of the folder's drive.
 * @param path  with no root name, or with the folder's own
 */
std::filesystem::path AppendResourcePath(const std::filesystem::path& folder, const ResourcePath& path);

/** Whether a path begins with all elements of the root; the root itself does. Compared exactly, as texts. */
bool IsPathWithinRoot(const std::filesystem::path& root, const std::filesystem::path& candidate);
