#include "tool/mirrack_dispatcher.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "tool/command_handlers.h"

CMirrackDispatcher::CMirrackDispatcher()
    : commands{
          {L"BeginSnapshotCreation", &tool::BeginSnapshotCreation},
          {L"GetAsyncOpStatus", &tool::GetAsyncOpStatus},
          {L"BeginSnapshotImport", &tool::BeginSnapshotImport},
          {L"GetSnapshotInfo", &tool::GetSnapshotInfo},
          {L"GetVMFilesList", &tool::GetVMFilesList},
          {L"SetVmBackupStatus", &tool::SetVmBackupStatus},
          {L"ConvertOffhostPaths", &tool::ConvertOffhostPaths},
          {L"CloseSnapshot", &tool::CloseSnapshot},
          {L"GetLockerJobInfo", &tool::GetLockerJobInfo},
      } {}

void CMirrackDispatcher::Invoke(const std::wstring& command, InputArguments_t& input,
                                OutputArguments_t& output) {
    // An unknown name is answered without being kept: a client that sends ever new names
    // must not grow the table.
    const auto found = commands.find(command);
    if (found == commands.end())
        throw exc::runtime_exc_t("Command [%1] not found", to_ansi_nothrow(command));
    found->second(input, output);
}
