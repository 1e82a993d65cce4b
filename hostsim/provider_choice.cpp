#include "hostsim/provider_choice.h"

#include "hostsim/wide_text.h"

namespace hostsim {

namespace {

bool names_target(const std::wstring& entry, const snapshot_target_t& target) {
    const std::wstring name = with_trailing_backslash(entry);
    if (target.volume) {
        if (iequals(name, target.volume->name))
            return true;
        for (auto& mount : target.volume->mounts)
            if (iequals(name, mount))
                return true;
        return false;
    }
    return iequals(name, target.share->root) || iequals(name, target.share->unc);
}

bool supports_by_kind(provider_kind kind, const snapshot_target_t& target) {
    switch (kind) {
    case provider_kind::system:
        return target.volume && !target.volume->csv;
    case provider_kind::csv:
        return target.volume && target.volume->csv;
    case provider_kind::fileshare:
        return target.share != nullptr;
    case provider_kind::software:
    case provider_kind::hardware:
        return false;
    }
    return false;
}

} // namespace

bool provider_supports(const provider_t& provider, const snapshot_target_t& target, bool transportable) {
    if (transportable && !provider.transportable)
        return false;
    if (!provider.explicit_volumes)
        return supports_by_kind(provider.kind, target);
    if (provider.all_volumes)
        return true;
    for (auto& entry : provider.volumes)
        if (names_target(entry, target))
            return true;
    return false;
}

const provider_t* default_provider(const host_model_t& model, const snapshot_target_t& target,
                                   bool transportable) {
    for (provider_kind kind : {provider_kind::hardware, provider_kind::software, provider_kind::system,
                               provider_kind::csv, provider_kind::fileshare})
        for (auto& p : model.providers)
            if (p.kind == kind && provider_supports(p, target, transportable))
                return &p;
    return nullptr;
}

} // namespace hostsim
