// The writers' states through a backup: stable once identified, waiting for freeze after
// the prepare, waiting for backup complete after the snapshot, stable again after the
// completion; a WriterFault replaces them from its phase on. An abort makes every writer
// stable again.
#pragma once

#include "hostsim/host_model.h"

#include <string>
#include <vector>

namespace hostsim {

struct writer_status_t {
    GUID instance{};
    GUID id{};
    std::wstring name;
    VSS_WRITER_STATE state = VSS_WS_UNKNOWN;
    HRESULT failure = S_OK;
};

class writer_states_t {
public:
    void pass(writer_phase phase) { passed_.push_back(phase); }
    void abort() { aborted_ = true; }

    std::vector<writer_status_t> report(const std::vector<const writer_t*>& writers,
                                        const std::vector<writer_fault_t>& faults) const;

private:
    std::vector<writer_phase> passed_;
    bool aborted_ = false;
};

} // namespace hostsim
