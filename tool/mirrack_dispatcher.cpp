#include "tool/mirrack_dispatcher.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "tool/command_handlers.h"

#include <algorithm>

namespace {

wchar_t FoldAsciiLetter(wchar_t c) {
    return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

} // namespace

bool CommandNameLess::operator()(const std::wstring& a, const std::wstring& b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
        return FoldAsciiLetter(x) < FoldAsciiLetter(y);
    });
}

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
