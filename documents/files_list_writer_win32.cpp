#include "documents/files_list_writer.h"

#include "common/exc/convert.h"
#include "common/xml/dom.h"

namespace documents::detail {

namespace {

void write_item(const dom_element_t& root, const CFilesListItem& item) {
    const list_names_t& n = names();
    const dom_element_t element = dom_add_child(root, n.item);
    dom_set_attribute(element, n.recursive, item.recursive != 0 ? n.true_text : n.false_text);
    dom_set_attribute(element, n.path, item.path);
    dom_set_attribute(element, n.mask, item.mask);
    dom_set_attribute(element, n.full_path, item.fullPath);
    dom_set_attribute(element, n.relative_path, item.relativePath);
}

} // namespace

std::wstring write_document(const ItemsList& items) {
    const dom_document_t document = dom_create_document();
    const dom_element_t root = dom_add_child(document, names().root);
    for (const CFilesListItem& item : items)
        write_item(root, item);
    return dom_serialize(document);
}

// The platform's DOM writes wide text only.
std::string write_document_utf8(const ItemsList& items) {
    return to_utf8(write_document(items));
}

} // namespace documents::detail
