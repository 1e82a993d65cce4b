#include "client/spec_file_vms.h"

#include "common/exc/exc.h"
#include "common/format/format.h"

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
    TiXmlDocument parsed;
    parsed.Parse(document.c_str(), nullptr, TIXML_ENCODING_UTF8);
    if (parsed.Error())
        throw exc::runtime_exc_t("The backup specification is not XML: %1", parsed.ErrorDesc());
    const TiXmlElement* spec = parsed.FirstChildElement("HVBackupSpec");
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
