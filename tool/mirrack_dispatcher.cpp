#include "tool/mirrack_dispatcher.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "tool/command_handlers.h"

CMirrackDispatcher::CMirrackDispatcher()
    : commands{
          {L"BeginSnapshotCreation", &handlers::BeginSnapshotCreation},
          {L"GetAsyncOpStatus", &handlers::GetAsyncOpStatus},
          {L"BeginSnapshotImport", &handlers::BeginSnapshotImport},
          {L"GetSnapshotInfo", &handlers::GetSnapshotInfo},
          {L"GetVMFilesList", &handlers::GetVMFilesList},
          {L"SetVmBackupStatus", &handlers::SetVmBackupStatus},
          {L"ConvertOffhostPaths", &handlers::ConvertOffhostPaths},
          {L"CloseSnapshot", &handlers::CloseSnapshot},
          {L"GetLockerJobInfo", &handlers::GetLockerJobInfo},
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
