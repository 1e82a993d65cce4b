// Commands sent to the real tool through the client library: the frames that
// come back and the lines the tool logs. No task can run in these tests, so they
// cover everything the tool answers before a task exists.
#include "tool_expectations.h"
#include "tool_session.h"

using test_support::contains;

TEST_F(ToolSession,
       WithoutATaskCommandsAnswerTheCauseThenTheTracedLineAndServingGoesOnAfterErrorsAndBadSpecs) {
    EXPECT_EQ(Call(L"GetAsyncOpStatus"), tool_expect::statusWithoutTask);
    EXPECT_EQ(Call(L"GetLockerJobInfo"), tool_expect::statusWithoutTask);
    EXPECT_EQ(Call(L"GetSnapshotInfo"),
              L"err:Snapshot is not initialized.\n--tr:Failed to get snapshot info.");
    // The conversion's failure line quotes the whole input: an answer longer than one read.
    std::wstring items = L"<FilesList>";
    for (int i = 0; i < 100; ++i)
        items += L"<File Recursive=\"false\" Path=\"C:\\VMs\\\" Mask=\"*\" FullPath=\"C:\\VMs\\disk" +
                 std::to_wstring(i) + L".vhdx\" RelativePath=\"\"/>";
    items += L"</FilesList>";
    const std::wstring frame =
        Call(L"ConvertOffhostPaths", CRequestArguments().AddEncoded(L"InPathsXML", items));
    EXPECT_GT(frame.size() * 2, 1024u);
    EXPECT_EQ(frame, tool_expect::ConversionWithoutTask(items));
    // Base64 that isn't decodes to nothing, quietly: the empty text is then no document.
    for (const std::wstring& encoded : {std::wstring(L"!!!!"), std::wstring(L"PEhW")}) {
        const std::wstring refusal =
            Call(L"BeginSnapshotCreation", JobArguments().AddText(L"SnapshotXmlSpec", encoded));
        EXPECT_TRUE(contains(refusal, L"Cannot parse backup specification document")) << refusal;
        EXPECT_TRUE(
            refusal.ends_with(L"\n--tr:Failed to create snapshot task. Job: 'J'. Backup console: 'C'."))
            << refusal;
    }
    // Closing is answered in any letter case.
    EXPECT_EQ(Call(L"CloseSnapshot"), tool_expect::emptyOutput);
    EXPECT_EQ(Call(L"closesnapshot"), tool_expect::emptyOutput);
    EXPECT_EQ(Exchange(L"CMD:CLOSESNAPSHOT XML:<InputArguments/>"), tool_expect::emptyOutput);

    // Unknown commands and broken frames get errors, and serving goes on.
    EXPECT_EQ(Call(L"Frobnicate"), tool_expect::UnknownCommand(L"Frobnicate"));
    EXPECT_EQ(Call(L"Frobnicate"), tool_expect::UnknownCommand(L"Frobnicate"));
    EXPECT_EQ(Exchange(L"cmd:CloseSnapshot  xml:<InputArguments/>"),
              L"err:Unknown type of request: 'cmd:CloseSnapshot  xml:<InputArguments/>'.");
    EXPECT_EQ(Exchange(L"cmd:CloseSnapshot"), L"err:Unknown type of request: 'cmd:CloseSnapshot'.");
    // An empty document is a load failure, not a broken frame.
    const std::wstring empty = Exchange(L"cmd:CloseSnapshot xml:");
    EXPECT_TRUE(empty.starts_with(L"err:")) << empty;
    EXPECT_FALSE(contains(empty, L"Unknown type of request")) << empty;
    EXPECT_EQ(Call(L"CloseSnapshot"), tool_expect::emptyOutput);
    const std::string log = EndSession();
    EXPECT_TRUE(contains(log, "Getting operation info. Failed.")) << log;
    EXPECT_TRUE(contains(log, "RPC method call has failed (GetAsyncOpStatus).")) << log;
    EXPECT_TRUE(contains(log, "ERR |Snapshot is not initialized.")) << log;
    EXPECT_TRUE(contains(log, tool_expect::closeLine)) << log;
}

TEST_F(ToolSession, ArgumentsMissingOrNoGuidsFailTheirReaderBeforeTheHolderIsAskedAndBareGuidsAreRead) {
    EXPECT_EQ(Call(L"BeginSnapshotCreation", CRequestArguments().AddText(L"BackupConsole", L"C")),
              L"err:Value of the argument 'JobName' is not defined.\n"
              L"--tr:Failed to retrieve value of the unicode attribute 'JobName'.");
    EXPECT_EQ(Call(L"BeginSnapshotImport", JobArguments()),
              L"err:Value of the argument 'BackupDoc' is not defined.\n"
              L"--tr:Failed to retrieve value of the multibyte attribute 'BackupDoc'.");
    EXPECT_EQ(Call(L"SetVmBackupStatus",
                   CRequestArguments().AddText(L"VmId", L"{99999999-2222-3333-4444-555555555555}")),
              L"err:Value of the argument 'BackupStatus' is not defined.\n"
              L"--tr:Failed to retrieve value of the boolean attribute 'BackupStatus'.");
    const std::wstring bad = Call(L"GetVMFilesList", CRequestArguments().AddText(L"VmId", L"not-a-guid"));
    EXPECT_TRUE(contains(bad, L"Failed to convert string [not-a-guid] to UUID.")) << bad;
    EXPECT_TRUE(bad.ends_with(L"\n--tr:Failed to retrieve value of the GUID attribute 'VmId'.")) << bad;

    EXPECT_EQ(Call(L"GetVMFilesList",
                   CRequestArguments().AddText(L"VmId", L"11111111-2222-3333-4444-5555AAAAAAAA")),
              L"err:Snapshot is not initialized.\n--tr:Failed to get file list of vm.");
    EXPECT_EQ(Call(L"SetVmBackupStatus", CRequestArguments()
                                             .AddText(L"vmid", L"{11111111-2222-3333-4444-555555555555}")
                                             .AddText(L"BackupStatus", L"0")),
              L"err:Snapshot is not initialized.\n"
              L"--tr:Failed to complete VM backup. VmID: '{11111111-2222-3333-4444-555555555555}'.");
    const std::string log = EndSession();
    EXPECT_FALSE(contains(log, "Starting VSS backup.")) << log;
    EXPECT_FALSE(contains(log, "Completing VM backup. VMID: '{99999999")) << log;
    EXPECT_TRUE(contains(log, "Getting file list of vm '{11111111-2222-3333-4444-5555aaaaaaaa}'.")) << log;
    EXPECT_TRUE(contains(log, "Completing VM backup. VMID: '{11111111-2222-3333-4444-555555555555}', Status: "
                              "'Failed'"))
        << log;
}
