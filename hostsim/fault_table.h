// The host's <Fault> entries and the per-process call counts that their nth refers to.
#pragma once

#include "hostsim/host_model.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace hostsim {

class fault_table_t {
public:
    explicit fault_table_t(std::vector<fault_t> faults) : faults_(std::move(faults)) {}

    // Counts the call and returns the fault it meets, if any: the first entry for the op
    // whose nth (if given) is this call's number and whose match (if given) is contained in
    // the call's main argument, without regard to case.
    std::optional<fault_t> on_call(const std::string& op, const std::wstring& main_argument);

    // Counts the answers of one provider, for its refuse="N".
    unsigned count_provider_answer(const GUID& provider);

private:
    std::vector<fault_t> faults_;
    std::mutex mutex_;
    std::map<std::string, unsigned> calls_;
    std::map<std::wstring, unsigned> provider_answers_;
};

} // namespace hostsim
