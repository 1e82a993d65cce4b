#include "documents/files_list.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/dom.h"
#include "documents/files_list_writer.h"

#include <utility>

namespace documents::detail {

const list_names_t& names() {
    static const list_names_t instance;
    return instance;
}

} // namespace documents::detail

namespace {

using documents::detail::list_names_t;
using documents::detail::names;

CFilesListItem read_item(const dom_element_t& element) {
    const list_names_t& n = names();
    const std::uint32_t recursive = iequals(dom_get_attribute_utf8(element, n.recursive),
                                            std::string(documents::detail::ascii::true_text))
                                        ? 1
                                        : 0;
    std::wstring path = dom_get_attribute(element, n.path);
    std::wstring mask = dom_get_attribute(element, n.mask);
    std::wstring fullPath = dom_get_attribute(element, n.full_path);
    std::wstring relativePath = dom_get_attribute(element, n.relative_path);
    return CFilesListItem(std::move(path), std::move(mask), recursive, std::move(relativePath),
                          std::move(fullPath));
}

} // namespace

CFilesListItem::CFilesListItem(std::wstring specPath, std::wstring specMask, std::uint32_t specRecursive,
                               std::wstring pathBelowSpec, std::wstring file)
    : path(std::move(specPath)), mask(std::move(specMask)), recursive(specRecursive),
      relativePath(std::move(pathBelowSpec)), fullPath(std::move(file)) {}

namespace {

template <class Write> auto serialize(const Write& write) {
    return exc::traced("Failed to serialize files list to XML.", [&] { return write(); });
}

// Every child counts as an item, whatever its name.
template <class Load> void deserialize(const Load& load, ItemsList& items) {
    exc::traced("Failed to de-serialize XML to the items list.", [&] {
        const dom_element_t root = dom_required_child(load(), names().root);
        const std::vector<dom_element_t> children = dom_child_elements(root);
        ItemsList read;
        read.reserve(children.size());
        for (const dom_element_t& child : children)
            read.push_back(read_item(child));
        // Into an empty list the read one goes whole rather than item by item.
        if (items.empty())
            items.swap(read);
        else
            items.insert(items.end(), std::make_move_iterator(read.begin()),
                         std::make_move_iterator(read.end()));
    });
}

} // namespace

std::wstring SerializeItemsList(const ItemsList& items) {
    return serialize([&] { return documents::detail::write_document(items); });
}

std::string SerializeItemsListUtf8(const ItemsList& items) {
    return serialize([&] { return documents::detail::write_document_utf8(items); });
}

void DeserializeItemsList(const std::wstring& xml, ItemsList& items) {
    deserialize([&] { return dom_load(xml); }, items);
}

void DeserializeItemsListUtf8(std::string_view xml, ItemsList& items) {
    deserialize([&] { return dom_load_utf8(xml); }, items);
}
