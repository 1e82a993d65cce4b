// POSIX only: the ANSI code page is UTF-8 here, so the log holds U+FFFD as its UTF-8 bytes.
#include "tool_session.h"

using test_support::contains;

// Text that is not well-formed reaches every answer and log line with U+FFFD in place of each bad
// sequence and every other word kept, as the system's conversions give it.
TEST_F(ToolSession, BadBytesAndLoneSurrogatesArriveAsReplacementsWithTheirWords) {
    // Lone surrogates in a command name, a text argument and a document.
    EXPECT_EQ(Call(L"Frob\xD800nicate"), L"err:Command [Frob\uFFFDnicate] not found");
    const std::wstring unloaded = Exchange(L"cmd:CloseSnapshot xml:<Input\xDC00");
    EXPECT_TRUE(unloaded.starts_with(L"err:")) << unloaded;
    EXPECT_TRUE(contains(unloaded, L"'<Input\uFFFD'")) << unloaded;
    // XML has no such character: the document is refused, and shown as the conversion gives it.
    const std::wstring refused =
        Call(L"GetSnapshotInfo",
             CRequestArguments().AddText(L"Note", std::wstring(L"a") + wchar_t(0xDBFF) + L"b"));
    EXPECT_TRUE(refused.starts_with(L"err:")) << refused;
    EXPECT_TRUE(refused.ends_with(L"\nFailed to load XML document '<InputArguments><Note value=\"a\uFFFDb\"/>"
                                  L"</InputArguments>'."))
        << refused;

    // Bytes that are not UTF-8 in a specification: the command runs on the rest of its content.
    const std::wstring started =
        Call(L"BeginSnapshotCreation",
             JobArguments().AddEncodedBytes(L"SnapshotXmlSpec",
                                            "<HVBackupSpec><VMs><VM id=\"vm\xff\"/></VMs></HVBackupSpec>"));
    EXPECT_TRUE(started.starts_with(L"xml:<OutputArguments><SnapshotId value=\"{")) << started;

    // A broken one is quoted up to its 128th character, and not into the middle of the next.
    std::string broken = "<HVBackupSpec><VMs>";
    std::wstring characters = L"<HVBackupSpec><VMs>";
    for (int i = 0; i < 141; ++i) {
        broken += "\xc3\xa9";
        if (characters.size() < 128)
            characters += L"\u00e9";
    }
    const std::wstring total = L"160";
    const std::wstring failed =
        Call(L"BeginSnapshotCreation", JobArguments().AddEncodedBytes(L"SnapshotXmlSpec", broken));
    EXPECT_TRUE(contains(failed, L"Source content: [" + characters + L"..., length: " + total + L"]."))
        << failed;
    EXPECT_TRUE(failed.ends_with(L"\n--tr:Failed to create snapshot task. Job: 'J'. Backup console: 'C'."))
        << failed;

    const std::string log = EndSession();
    const std::string fffd = "\xef\xbf\xbd";
    EXPECT_TRUE(contains(log, "Starting VSS backup. Job: 'J'. Backup server: 'C'. Backup spec: "
                              "'<HVBackupSpec><VMs><VM id=\"vm" +
                                  fffd + "\"/>"))
        << log;
    EXPECT_TRUE(contains(log, "VmID: 'vm" + fffd + "'")) << log;
    EXPECT_TRUE(contains(log, "[SoapEnter] Frob" + fffd + "nicate:")) << log;
    EXPECT_TRUE(contains(log, "RPC method call has failed (Frob" + fffd + "nicate).")) << log;
    EXPECT_TRUE(contains(log, "value=\"a" + fffd + "b\"")) << log;
    EXPECT_FALSE(contains(log, "UNICODE->ANSI failed")) << log;
    EXPECT_FALSE(contains(log, "ANSI -> UNICODE failed.")) << log;
}
