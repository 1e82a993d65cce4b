#include "fuzz/command_arguments.h"

#include "common/exc/convert.h"
#include "common/format/format.h"
#include "documents/files_list.h"
#include "documents/snapshot_ids.h"
#include "invoke/arguments.h"
#include "spec/hv_backup_spec.h"

#include <exception>

namespace fuzz {

namespace {

void read_argument(const InputArguments_t& input, const command_argument_t& argument,
                   OutputArguments_t& output) {
    switch (argument.kind) {
    case argument_kind_t::text:
        output.WriteText(argument.name, input.ReadText(argument.name));
        return;
    case argument_kind_t::guid:
        output.WriteGuid(argument.name, input.ReadGuid(argument.name));
        return;
    case argument_kind_t::boolean:
        output.WriteBool(argument.name, input.ReadBool(argument.name));
        return;
    case argument_kind_t::encoded:
        output.WriteEncoded(argument.name,
                            reparse_carried_document(argument.name, input.ReadEncoded(argument.name)));
        return;
    }
}

} // namespace

std::wstring reparse_carried_document(const std::string& name, const std::wstring& document) {
    if (name == "InPathsXML") {
        ItemsList items;
        DeserializeItemsList(document, items);
        return SerializeItemsList(items);
    }
    if (name == "SnapshotIDsList") {
        SnapshotIdList ids;
        DeserializeSnapshotIds(document, ids);
        return SerializeSnapshotIds(ids);
    }
    if (name == "SnapshotXmlSpec") {
        const CHvBackupSpec spec(to_ansi(document));
        return std::to_wstring(spec.vms.size());
    }
    return document;
}

void read_like_the_commands(const InputArguments_t& input, OutputArguments_t& output) {
    for (const command_argument_t& argument : command_arguments) {
        try {
            read_argument(input, argument, output);
        } catch (const std::exception&) {
            // A bad argument fails its command alone; the fuzzer wants the rest read too.
        }
    }
}

} // namespace fuzz
