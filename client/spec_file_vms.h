// The VMs a backup specification names: the client needs their ids to ask for
// each VM's files and to report each VM, as a backup server does from its own job.
#pragma once

#include "compat/win_types.h"

#include <filesystem>
#include <string>
#include <vector>

namespace client {

struct spec_vm_t {
    std::wstring id; // as the document writes it: the name of the VM's folder in the backup
    GUID guid = GUID_NULL;
};

// The document's bytes; throws exc::runtime_exc_t when the file can't be read.
std::string ReadSpecDocument(const std::filesystem::path& file);

// HVBackupSpec/VMs/VM ids in document order. Throws an exc::exc_base_t for a document that
// isn't XML (in the tool's words, a document nested too deep included), has no VM list, or
// names a VM by something other than a GUID.
std::vector<spec_vm_t> SpecVms(const std::string& document);

} // namespace client
