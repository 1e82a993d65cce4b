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

CMirrackDispatcher::CMirrackDispatcher() {
    commands[L"BeginSnapshotCreation"] = &handlers::BeginSnapshotCreation;
    commands[L"GetAsyncOpStatus"] = &handlers::GetAsyncOpStatus;
    commands[L"BeginSnapshotImport"] = &handlers::BeginSnapshotImport;
    commands[L"GetSnapshotInfo"] = &handlers::GetSnapshotInfo;
    commands[L"GetVMFilesList"] = &handlers::GetVMFilesList;
    commands[L"SetVmBackupStatus"] = &handlers::SetVmBackupStatus;
    commands[L"ConvertOffhostPaths"] = &handlers::ConvertOffhostPaths;
    commands[L"CloseSnapshot"] = &handlers::CloseSnapshot;
    commands[L"GetLockerJobInfo"] = &handlers::GetLockerJobInfo;
}

void CMirrackDispatcher::Invoke(const std::wstring& command, InputArguments_t& input,
                                OutputArguments_t& output) {
    // The index operator keeps an unknown name with an empty handler; a repeat of
    // that name then takes the same path, so the answer stays the same.
    const CommandHandler handler = commands[command];
    if (!handler)
        throw exc::runtime_exc_t("Command [%1] not found", to_ansi_nothrow(command));
    handler(input, output);
}
