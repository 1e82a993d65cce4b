#include "hostsim/fault_table.h"

#include "hostsim/wide_text.h"

namespace hostsim {

std::optional<fault_t> fault_table_t::on_call(const std::string& op, const std::wstring& main_argument) {
    std::lock_guard guard(mutex_);
    unsigned number = ++calls_[op];
    for (auto& f : faults_) {
        if (f.op != op)
            continue;
        if (f.nth != 0 && f.nth != number)
            continue;
        if (!f.match.empty() && !icontains(main_argument, f.match))
            continue;
        return f;
    }
    return std::nullopt;
}

unsigned fault_table_t::count_provider_answer(const GUID& provider) {
    std::lock_guard guard(mutex_);
    return ++provider_answers_[guid_text(provider)];
}

} // namespace hostsim
