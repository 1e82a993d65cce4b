// The nine commands: each reads its arguments, calls one task holder operation
// and writes the result. They keep no state of their own.
#pragma once

class InputArguments_t;
class OutputArguments_t;

namespace tool {

void BeginSnapshotCreation(InputArguments_t& input, OutputArguments_t& output);
void GetAsyncOpStatus(InputArguments_t& input, OutputArguments_t& output);
void BeginSnapshotImport(InputArguments_t& input, OutputArguments_t& output);
void GetSnapshotInfo(InputArguments_t& input, OutputArguments_t& output);
void GetVMFilesList(InputArguments_t& input, OutputArguments_t& output);
void SetVmBackupStatus(InputArguments_t& input, OutputArguments_t& output);
void ConvertOffhostPaths(InputArguments_t& input, OutputArguments_t& output);
void CloseSnapshot(InputArguments_t& input, OutputArguments_t& output);
void GetLockerJobInfo(InputArguments_t& input, OutputArguments_t& output);

} // namespace tool
