#include "client/spec_command.h"

#include "client/backup_arguments.h"
#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <functional>
#include <map>
#include <ostream>

namespace client {

namespace {

const std::map<std::string, provider_kind_t> provider_kinds = {{"system", provider_kind_t::system},
                                                               {"software", provider_kind_t::software},
                                                               {"hardware", provider_kind_t::hardware},
                                                               {"fileshare", provider_kind_t::fileshare},
                                                               {"csv", provider_kind_t::csv}};

GUID guid_of(const std::string& option, const std::string& text) {
    try {
        return string_to_guid(text);
    } catch (const std::exception&) {
        throw usage_error_t{option + " takes a GUID: '" + text + "'."};
    }
}

// The writer names a VM's component by its id without braces; the tool compares the text.
std::wstring component_name(const GUID& vm) {
    const std::wstring braced = guid_to_wstring(vm);
    return braced.substr(1, braced.size() - 2);
}

// "KIND:GUID", KIND one of provider_kinds.
spec_provider_t provider_of(const std::string& option, const std::string& text) {
    const std::size_t colon = text.find(':');
    std::string name = text.substr(0, colon);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto kind = provider_kinds.find(name);
    if (colon == std::string::npos || kind == provider_kinds.end())
        throw usage_error_t{option +
                            " takes KIND:GUID, KIND one of system, software, hardware, fileshare, "
                            "csv: '" +
                            text + "'."};
    return {kind->second, guid_of(option, text.substr(colon + 1)), L""};
}

// "NAME=VALUE" split at the first '=' (a GUID has none), both parts needed.
std::pair<std::string, std::string> split_pair(const std::string& option, const std::string& text,
                                               const char* form) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw usage_error_t{option + " takes " + form + ": '" + text + "'."};
    return {text.substr(0, equals), text.substr(equals + 1)};
}

// Mount points are one volume when they differ only in case or a closing separator.
std::wstring volume_key(std::wstring mountPoint) {
    while (!mountPoint.empty() && (mountPoint.back() == L'\\' || mountPoint.back() == L'/'))
        mountPoint.pop_back();
    return to_lower(mountPoint);
}

class spec_builder_t {
public:
    void AddVm(const std::string& text) {
        const GUID id = guid_of("--vm", text);
        if (std::find(ids.begin(), ids.end(), id) != ids.end())
            throw usage_error_t{"--vm " + text + " is given twice."};
        ids.push_back(id);
        parsed.spec.vms.push_back({component_name(id), false, {}, {}});
    }

    // The VM that another option names; it must be one of the --vm options, in any order.
    void Later(std::function<void(spec_vm_entry_t&)> change, const std::string& option,
               const std::string& vm) {
        pending.push_back({option, vm, guid_of(option, vm), std::move(change)});
    }

    void SetProvider(const std::string& text) {
        if (parsed.spec.defaultProvider)
            throw usage_error_t{"--provider is given twice."};
        parsed.spec.defaultProvider = provider_of("--provider", text);
    }

    void AddVolumeProvider(const std::string& text) {
        // The mount point may hold '=' and ':'; the provider after the last '=' holds neither twice.
        const std::size_t equals = text.rfind('=');
        if (equals == std::string::npos || equals == 0)
            throw usage_error_t{"--volume-provider takes MOUNTPOINT=KIND:GUID: '" + text + "'."};
        spec_provider_t provider = provider_of("--volume-provider", text.substr(equals + 1));
        provider.mountPoint = from_utf8(text.substr(0, equals));
        for (const spec_provider_t& other : parsed.spec.volumeProviders) {
            if (volume_key(other.mountPoint) == volume_key(provider.mountPoint))
                throw usage_error_t{"--volume-provider names the volume " + text.substr(0, equals) +
                                    " twice."};
        }
        parsed.spec.volumeProviders.push_back(provider);
    }

    spec_arguments_t Finish() {
        if (ids.empty())
            throw usage_error_t{"spec needs at least one --vm GUID."};
        if (parsed.outFile.empty())
            throw usage_error_t{"spec needs -o FILE."};
        for (const pending_t& change : pending) {
            const auto found = std::find(ids.begin(), ids.end(), change.id);
            if (found == ids.end())
                throw usage_error_t{change.option + " names the VM " + change.vm + ", which no --vm gives."};
            change.apply(parsed.spec.vms[static_cast<std::size_t>(found - ids.begin())]);
        }
        CheckOffhost();
        return parsed;
    }

    spec_arguments_t parsed;

private:
    // A transportable snapshot is carried to a proxy; a share's copy or a cluster volume's
    // own provider can't be.
    void CheckOffhost() const {
        if (!parsed.spec.offhost)
            return;
        std::vector<spec_provider_t> providers = parsed.spec.volumeProviders;
        if (parsed.spec.defaultProvider)
            providers.push_back(*parsed.spec.defaultProvider);
        for (const spec_provider_t& provider : providers) {
            if (provider.kind == provider_kind_t::fileshare || provider.kind == provider_kind_t::csv)
                throw usage_error_t{"--offhost needs transportable shadow copies, which a fileshare or csv "
                                    "provider doesn't make."};
        }
    }

    struct pending_t {
        std::string option;
        std::string vm;
        GUID id;
        std::function<void(spec_vm_entry_t&)> apply;
    };
    std::vector<GUID> ids;
    std::vector<pending_t> pending;
};

} // namespace

spec_arguments_t ParseSpecArguments(const std::vector<std::string>& arguments) {
    spec_builder_t builder;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string value;
        if (TakeOptionValue(arguments, i, "--vm", value)) {
            builder.AddVm(value);
        } else if (TakeOptionValue(arguments, i, "--crash-consistent", value)) {
            builder.Later([](spec_vm_entry_t& vm) { vm.crashConsistent = true; }, "--crash-consistent",
                          value);
        } else if (TakeOptionValue(arguments, i, "--exclude-disk", value)) {
            const auto [vm, disk] = split_pair("--exclude-disk", value, "VM=DISKPATH");
            builder.Later(
                [disk = disk](spec_vm_entry_t& entry) { entry.excludedDisks.push_back(from_utf8(disk)); },
                "--exclude-disk", vm);
        } else if (TakeOptionValue(arguments, i, "--aux-file", value)) {
            const auto [vm, file] = split_pair("--aux-file", value, "VM=FILEPATH");
            builder.Later(
                [file = file](spec_vm_entry_t& entry) { entry.auxFiles.push_back(from_utf8(file)); },
                "--aux-file", vm);
        } else if (TakeOptionValue(arguments, i, "--provider", value)) {
            builder.SetProvider(value);
        } else if (TakeOptionValue(arguments, i, "--volume-provider", value)) {
            builder.AddVolumeProvider(value);
        } else if (arguments[i] == "--offhost") {
            builder.parsed.spec.offhost = true;
        } else if (arguments[i] == "--csv-writer") {
            builder.parsed.spec.useCsvWriter = true;
        } else if (TakeOptionValue(arguments, i, "-o", value)) {
            builder.parsed.outFile = value;
        } else {
            throw usage_error_t{"spec doesn't take '" + arguments[i] + "'."};
        }
    }
    return builder.Finish();
}

int RunSpecCommand(const client_options_t&, const std::vector<std::string>& arguments, std::ostream& out) {
    const spec_arguments_t parsed = ParseSpecArguments(arguments);
    std::ofstream file(parsed.outFile, std::ios::binary);
    file << WriteBackupSpec(parsed.spec);
    if (!file.flush())
        throw exc::runtime_exc_t("Can't write the backup specification [%1].", parsed.outFile.string());
    out << "Backup specification of " << parsed.spec.vms.size() << " VM(s) written to "
        << parsed.outFile.string() << ".\n";
    return exit_success;
}

} // namespace client
