#include "client/spec_file_vms.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/xml/xml_node.h"

#include <tinyxml.h>

#include <fstream>
#include <iterator>

namespace client {

std::string ReadSpecDocument(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw exc::runtime_exc_t("Can't read the backup specification [%1].", file.string());
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::vector<spec_vm_t> SpecVms(const std::string& document) {
    // Read as the tool reads it, so that a document the tool refuses is refused here in its words.
    std::shared_ptr<TiXmlDocument> parsed;
    try {
        parsed = parse_xml(document);
    } catch (const std::exception& e) {
        exc::rethrow_with_trace("The backup specification is not XML.", e);
    }
    const TiXmlElement* spec = parsed->FirstChildElement("HVBackupSpec");
    const TiXmlElement* list = spec ? spec->FirstChildElement("VMs") : nullptr;
    if (!list)
        throw exc::runtime_exc_t("The backup specification has no element HVBackupSpec/VMs.");

    std::vector<spec_vm_t> vms;
    for (const TiXmlElement* vm = list->FirstChildElement("VM"); vm; vm = vm->NextSiblingElement("VM")) {
        const char* id = vm->Attribute("id");
        if (!id)
            throw exc::runtime_exc_t("A VM of the backup specification has no id.");
        try {
            vms.push_back({from_utf8(id), string_to_guid(std::string(id))});
        } catch (const std::exception&) {
            throw exc::runtime_exc_t("The VM id [%1] of the backup specification is not a GUID.", id);
        }
    }
    return vms;
}

} // namespace client
