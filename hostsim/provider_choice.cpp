#include "hostsim/provider_choice.h"

#include "hostsim/wide_text.h"

#include <algorithm>

namespace hostsim {

namespace {

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
    return std::any_of(provider.volumes.begin(), provider.volumes.end(), [&](const std::wstring& entry) {
        return target.named_by(with_trailing_backslash(entry));
    });
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
