// Commands sent to the real tool through the client library: the frames that
// come back and the lines the tool logs. No task can run in these tests, so they
// cover everything the tool answers before a task exists.
#include "tool_expectations.h"
#include "tool_job.h"

#include <gtest/gtest.h>

using client::CRequestArguments;
using test_support::contains;

namespace {

// A session with the real tool through the client library: calls, raw frames, and the log once
// the client has left.
class ToolSession : public ::testing::Test {
protected:
    std::wstring Call(const std::wstring& command, const CRequestArguments& arguments = CRequestArguments()) {
        return job.Call(command, arguments).Frame();
    }
    std::wstring Exchange(const std::wstring& request) { return job.connection->Exchange(request); }
    std::string EndSession() { return job.End(); }

    ToolJob job;
};

CRequestArguments JobArguments() {
    return CRequestArguments().AddText(L"JobName", L"J").AddText(L"BackupConsole", L"C");
}

} // namespace

TEST_F(ToolSession,
       WithoutATaskCommandsAnswerTheCauseThenTheTracedLineAndServingGoesOnAfterErrorsAndBadSpecs) {
    EXPECT_EQ(Call(L"GetAsyncOpStatus"), tool_expect::statusWithoutTask);
    EXPECT_EQ(Call(L"GetLockerJobInfo"), tool_expect::statusWithoutTask);
    EXPECT_EQ(Call(L"GetSnapshotInfo"),
              L"err:Snapshot is not initialized.\n--tr:Failed to get snapshot info.");
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
    EXPECT_EQ(Call(L"closesnapshot"), tool_expect::emptyOutput);
    EXPECT_EQ(Exchange(L"CMD:CLOSESNAPSHOT XML:<InputArguments/>"), tool_expect::emptyOutput);

    // Unknown commands and broken frames (each kind is the server's) get errors, and serving goes on.
    EXPECT_EQ(Call(L"Frobnicate"), L"err:Command [Frobnicate] not found");
    EXPECT_EQ(Exchange(L"cmd:CloseSnapshot"), L"err:Unknown type of request: 'cmd:CloseSnapshot'.");
    EXPECT_EQ(Call(L"CloseSnapshot"), tool_expect::emptyOutput);
    const std::string log = EndSession();
    for (const char* line :
         {"Getting operation info. Failed.", "RPC method call has failed (GetAsyncOpStatus).",
          "ERR |Snapshot is not initialized.", tool_expect::closeLine})
        EXPECT_TRUE(contains(log, line)) << line << "\n" << log;
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

#ifndef _WIN32 // The ANSI code page is UTF-8 here, so the log holds U+FFFD as its UTF-8 bytes.
// Text that is not well-formed reaches every answer and log line with U+FFFD in place of each bad
// sequence and every other word kept, as the system's conversions give it.
TEST_F(ToolSession, BadBytesAndLoneSurrogatesArriveAsReplacementsWithTheirWords) {
    // Lone surrogates in a command name, a text argument and a document.
    EXPECT_EQ(Call(L"Frob\xD800nicate"), L"err:Command [Frob\uFFFDnicate] not found");
    EXPECT_EQ(Exchange(L"cmd:CloseSnapshot xml:<Input\xDC00"),
              L"err: Error code: 0x00000001\nFailed to load XML document '<Input\uFFFD'.");
    // XML has no such character: the document is refused, and shown as the conversion gives it.
    EXPECT_EQ(Call(L"GetSnapshotInfo",
                   CRequestArguments().AddText(L"Note", std::wstring(L"a") + wchar_t(0xDBFF) + L"b")),
              L"err: Error code: 0x00000001\nFailed to load XML document '<InputArguments><Note "
              L"value=\"a\uFFFDb\"/></InputArguments>'.");

    // Bytes that are not UTF-8 in a specification: the command runs on the rest of its content. How a
    // broken one is quoted is the specification's and the log's formatter's.
    const std::wstring started =
        Call(L"BeginSnapshotCreation",
             JobArguments().AddEncodedBytes(L"SnapshotXmlSpec",
                                            "<HVBackupSpec><VMs><VM id=\"vm\xff\"/></VMs></HVBackupSpec>"));
    EXPECT_TRUE(started.starts_with(L"xml:<OutputArguments><SnapshotId value=\"{")) << started;

    const std::string log = EndSession();
    const std::string fffd = "\xef\xbf\xbd";
    for (const std::string& line :
         {"Starting VSS backup. Job: 'J'. Backup server: 'C'. Backup spec: '<HVBackupSpec><VMs><VM id=\"vm" +
              fffd + "\"/>",
          "VmID: 'vm" + fffd + "'", "[SoapEnter] Frob" + fffd + "nicate:",
          "RPC method call has failed (Frob" + fffd + "nicate).", "value=\"a" + fffd + "b\""})
        EXPECT_TRUE(contains(log, line)) << line << "\n" << log;
    for (const char* failure : {"UNICODE->ANSI failed", "ANSI -> UNICODE failed."})
        EXPECT_FALSE(contains(log, failure)) << log;
}
#endif
