// The arguments the tool's commands take, read the way the commands read them, so that a
// fuzz target walks the same road as a request from a backup server.
#pragma once

#include <string>

class InputArguments_t;
class OutputArguments_t;

namespace fuzz {

enum class argument_kind_t { text, guid, boolean, encoded };

struct command_argument_t {
    const char* name;
    argument_kind_t kind;
};

// Every argument name the commands use, with the reader its command applies.
inline constexpr command_argument_t command_arguments[] = {
    {"JobName", argument_kind_t::text},
    {"BackupConsole", argument_kind_t::text},
    {"VmId", argument_kind_t::guid},
    {"BackupStatus", argument_kind_t::boolean},
    {"SnapshotXmlSpec", argument_kind_t::encoded},
    {"BackupDoc", argument_kind_t::encoded},
    {"SnapshotIDsList", argument_kind_t::encoded},
    {"InPathsXML", argument_kind_t::encoded},
};

// Reads each argument with its command's reader; the documents inside the encoded ones
// are parsed as their commands parse them and written back to the output. A failure of
// one argument is passed over: the next one is still read.
void read_like_the_commands(const InputArguments_t& input, OutputArguments_t& output);

// Parses a document that travels inside an encoded argument, by the argument's name, and
// gives it back serialized again (the backup specification as its VM count).
std::wstring reparse_carried_document(const std::string& name, const std::wstring& document);

} // namespace fuzz
