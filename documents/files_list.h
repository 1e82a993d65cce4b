// The items list: the files of a VM, <FilesList><File .../>...</FilesList>.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// One file of a VM: the file spec it came from (path, mask, recursive), its path
// below the spec's path, and the file itself (the field later steps rewrite).
struct CFilesListItem {
    std::wstring path;
    std::wstring mask;
    std::uint32_t recursive = 0;
    std::wstring relativePath;
    std::wstring fullPath;

    CFilesListItem() = default;
    CFilesListItem(std::wstring path, std::wstring mask, std::uint32_t recursive, std::wstring relativePath,
                   std::wstring fullPath);

    bool operator==(const CFilesListItem&) const = default;
};

typedef std::vector<CFilesListItem> ItemsList;

std::wstring SerializeItemsList(const ItemsList& items);
// Appends the items in document order; on failure the list is left as it was.
// "Recursive" is 1 only for "true" (any case): unlike boolean arguments, "1" is 0.
void DeserializeItemsList(const std::wstring& xml, ItemsList& items);

// The same over the document's UTF-8 text, the form in which it crosses the pipe: a list of
// megabytes is not widened to be narrowed again.
std::string SerializeItemsListUtf8(const ItemsList& items);
void DeserializeItemsListUtf8(std::string_view xml, ItemsList& items);
