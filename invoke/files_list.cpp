#include "invoke/files_list.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/dom.h"

#include <utility>

namespace {

const wchar_t root_name[] = L"FilesList";
const wchar_t item_name[] = L"File";
const wchar_t recursive_attribute[] = L"Recursive";
const wchar_t path_attribute[] = L"Path";
const wchar_t mask_attribute[] = L"Mask";
const wchar_t full_path_attribute[] = L"FullPath";
const wchar_t relative_path_attribute[] = L"RelativePath";

void write_item(const dom_element_t& root, const CFilesListItem& item) {
    const dom_element_t element = dom_add_child(root, item_name);
    dom_set_attribute(element, recursive_attribute, item.recursive != 0 ? L"true" : L"false");
    dom_set_attribute(element, path_attribute, item.path);
    dom_set_attribute(element, mask_attribute, item.mask);
    dom_set_attribute(element, full_path_attribute, item.fullPath);
    dom_set_attribute(element, relative_path_attribute, item.relativePath);
}

CFilesListItem read_item(const dom_element_t& element) {
    const std::uint32_t recursive = iequals(dom_get_attribute(element, recursive_attribute), L"true") ? 1 : 0;
    std::wstring path = dom_get_attribute(element, path_attribute);
    std::wstring mask = dom_get_attribute(element, mask_attribute);
    std::wstring fullPath = dom_get_attribute(element, full_path_attribute);
    std::wstring relativePath = dom_get_attribute(element, relative_path_attribute);
    return CFilesListItem(std::move(path), std::move(mask), recursive, std::move(relativePath),
                          std::move(fullPath));
}

} // namespace

CFilesListItem::CFilesListItem(std::wstring path, std::wstring mask, std::uint32_t recursive,
                               std::wstring relativePath, std::wstring fullPath)
    : path(std::move(path)), mask(std::move(mask)), recursive(recursive),
      relativePath(std::move(relativePath)), fullPath(std::move(fullPath)) {}

std::wstring SerializeItemsList(const ItemsList& items) {
    try {
        const dom_document_t document = dom_create_document();
        const dom_element_t root = dom_add_child(document, root_name);
        for (const CFilesListItem& item : items)
            write_item(root, item);
        return dom_serialize(document);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to serialize files list to XML.", e);
    }
}

// Every child counts as an item, whatever its name.
void DeserializeItemsList(const std::wstring& xml, ItemsList& items) {
    try {
        const dom_element_t root = dom_required_child(dom_load(xml), root_name);
        const std::vector<dom_element_t> children = dom_child_elements(root);
        ItemsList read;
        read.reserve(children.size());
        for (const dom_element_t& child : children)
            read.push_back(read_item(child));
        items.insert(items.end(), std::make_move_iterator(read.begin()), std::make_move_iterator(read.end()));
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("Failed to de-serialize XML to the items list.", e);
    }
}
