#include "documents/snapshot_ids.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/dom.h"

namespace {

const wchar_t root_name[] = L"SnapshotIDs";
const wchar_t id_name[] = L"ID";
const wchar_t value_attribute[] = L"value";

} // namespace

std::wstring SerializeSnapshotIds(const SnapshotIdList& ids) {
    return exc::traced("Failed to serialize VSS IDs list to XML.", [&] {
        const dom_document_t document = dom_create_document();
        const dom_element_t root = dom_add_child(document, root_name);
        for (const GUID& id : ids)
            dom_set_attribute(dom_add_child(root, id_name), value_attribute, guid_to_wstring(id));
        return dom_serialize(document);
    });
}

// Every child counts as an ID, whatever its name.
void DeserializeSnapshotIds(const std::wstring& xml, SnapshotIdList& ids) {
    exc::traced("Failed to de-serialize VSS IDs list from XML.", [&] {
        const dom_element_t root = dom_required_child(dom_load(xml), root_name);
        SnapshotIdList read;
        for (const dom_element_t& child : dom_child_elements(root))
            read.push_back(dom_get_guid_attribute(child, value_attribute));
        ids.insert(ids.end(), read.begin(), read.end());
    });
}
