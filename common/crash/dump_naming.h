// Where the next crash dump goes: "<prefix>_crash_<N>.<extension>" in the dump
// folder, with the lowest free N, after the oldest dumps have made room.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace crash {

// A folder keeps fewer dumps than this once a new one is named.
inline constexpr std::size_t max_dumps_kept = 20;
// Identifiers 0 to 9999 are tried.
inline constexpr int dump_identifiers = 10000;

// Makes the dump file at a path only where no file of that name exists: false when one does,
// which a dump of another thread that crashed at the same moment may have made since the folder
// was listed. Any other failure throws.
using create_new_dump_t = std::function<bool(const std::wstring& path)>;

// Creates the folder (UTF-8), deletes the oldest dumps of this extension down to
// max_dumps_kept - 1, and creates the dump of the lowest free number through create_new; a name
// taken meanwhile passes on to the next number, so that each crash keeps its own dump. The full
// path of the dump. A failure of naming throws, wrapped by "Cannot define the name of the next
// crash dump. Dumps folder: [%1]."; one of create_new goes out as it is.
std::wstring create_next_dump(const std::string& folder, const std::string& prefix,
                              const std::string& extension, const create_new_dump_t& create_new);

} // namespace crash
