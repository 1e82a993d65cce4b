// Where the next crash dump goes: "<prefix>_crash_<N>.<extension>" in the dump
// folder, with the lowest free N, after the oldest dumps have made room.
#pragma once

#include <cstddef>
#include <string>

namespace crash {

// A folder keeps fewer dumps than this once a new one is named.
inline constexpr std::size_t max_dumps_kept = 20;
// Identifiers 0 to 9999 are tried.
inline constexpr int dump_identifiers = 10000;

// Creates the folder (UTF-8), deletes the oldest dumps of this extension down
// to max_dumps_kept - 1 and returns the full path of the next dump. Throws,
// wrapped by "Cannot define the name of the next crash dump. Dumps folder: [%1].".
std::wstring next_dump_path(const std::string& folder, const std::string& prefix,
                            const std::string& extension);

} // namespace crash
