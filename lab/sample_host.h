// mirrack-lab create: a sample Hyper-V host directory (host.xml, volume contents, backup
// specifications) or the matching off-host proxy.
#pragma once

#include "lab/sample_vms.h"

#include <filesystem>

namespace lab {

// Ids the sample hosts use, for the demo and the tests.
extern const wchar_t sample_c_volume[];
extern const wchar_t sample_csv_volume[];
extern const wchar_t sample_proxy_volume[];
extern const wchar_t hardware_provider_id[];

// Fails with std::runtime_error if the directory holds a host already.
void create_sample_host(const std::filesystem::path& dir, const sample_options_t& options);

} // namespace lab
