#include "common/exc/convert.h"
#include "invoke/arguments.h"
#include "invoke/base64.h"
#include "tests/invoke/msxml_layout.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

namespace {

InputArguments_t request_with(const std::wstring& name, const std::wstring& value) {
    return InputArguments_t(L"<InputArguments><" + name + L" value=\"" + value + L"\"/></InputArguments>");
}

std::wstring encoded(const std::string& bytes) {
    const std::string text = wrap::base64_encode(bytes);
    return std::wstring(text.begin(), text.end());
}

TEST(ArgumentLookup, FindsTheFirstArgumentOfANameInAnyCaseAndFailuresNameItAndTheReader) {
    const InputArguments_t input(
        L"<InputArguments><jobname value='first'/><JobName value='second'/></InputArguments>");
    EXPECT_EQ(input.ReadText("JobName"), L"first");
    EXPECT_EQ(failure_lines([] { InputArguments_t(L"<InputArguments/>").ReadText("JobName"); }),
              (std::vector<std::string>{"Value of the argument 'JobName' is not defined.",
                                        "Failed to retrieve value of the unicode attribute 'JobName'."}));
    EXPECT_EQ(failure_lines(
                  [] { InputArguments_t(L"<Other><JobName value='x'/></Other>").ReadMultibyte("JobName"); }),
              (std::vector<std::string>{"There is no child node with the specified name 'InputArguments'.",
                                        "Failed to find argument node 'JobName'.",
                                        "Failed to retrieve value of the multibyte attribute 'JobName'."}));
    EXPECT_EQ(failure_lines([] { request_with(L"VmId", L"not-a-guid").ReadGuid("VmId"); }, 2),
              (std::vector<std::string>{"Failed to convert string [not-a-guid] to UUID.",
                                        "Failed to retrieve value of the GUID attribute 'VmId'."}));
}

TEST(ArgumentValues, MultibyteIsUtf8BooleanIsFalseOnlyForFalseAndZeroAndGuidsTakeAnyBraces) {
    EXPECT_EQ(request_with(L"Name", L"a\u00e9\U0001F600").ReadMultibyte("Name"), "a\xc3\xa9\xf0\x9f\x98\x80");
    EXPECT_EQ(request_with(L"Name", std::wstring(3000, L'n')).ReadMultibyte("Name"), std::string(3000, 'n'));
    const std::pair<const wchar_t*, bool> cases[] = {{L"TRUE", true}, {L"False", false}, {L"1", true},
                                                     {L"", true},     {L"0", false},     {L"no", true}};
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(request_with(L"BackupStatus", text).ReadBool("BackupStatus"), expected);
    const GUID expected = request_with(L"VmId", L"{6B29FC40-CA47-1067-B31D-00DD010662DA}").ReadGuid("VmId");
    EXPECT_EQ(expected.Data1, 0x6b29fc40u);
    for (const wchar_t* text :
         {L"6b29fc40-ca47-1067-b31d-00dd010662da", L"{6b29fc40-ca47-1067-b31d-00dd010662da",
          L"6b29fc40-ca47-1067-b31d-00dd010662da}"})
        EXPECT_EQ(request_with(L"VmId", text).ReadGuid("VmId"), expected);
}

// The UTF-8 reading gives the same text as the wide one, bad sequences replaced alike.
TEST(EncodedArgument, StopsAtABreakOrAZeroWithoutFailing) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        {encoded("<a>\xc3\xa9</a>"), L"<a>\u00e9</a>"},
        {encoded("abc") + L" " + encoded("def"), L"abc"},
        {encoded(std::string("ab\0cd", 5)), L"ab"},
        {encoded("\xff<\xfe\xe2\x82 long enough to pass a block of sixteen \xc3."),
         L"\uFFFD<\uFFFD\uFFFD long enough to pass a block of sixteen \uFFFD."}};
    for (const auto& [value, text] : cases) {
        const InputArguments_t request = request_with(L"Spec", value);
        EXPECT_EQ(request.ReadEncoded("Spec"), text);
        EXPECT_EQ(request.ReadEncodedUtf8("Spec"), to_utf8(text));
    }
}

TEST(OutputDocument, WritesArgumentsInOrderWithoutDeclarationAndEncodedValuesReadBack) {
    EXPECT_EQ(msxml_layout::without_breaks(OutputArguments_t().Serialize()), L"<OutputArguments/>");
    OutputArguments_t output;
    output.WriteGuid("SnapshotId",
                     request_with(L"Id", L"6B29FC40-CA47-1067-B31D-00DD010662DA").ReadGuid("Id"));
    output.WriteText("ErrDescription", L"");
    output.WriteBool("IsCompleted", false);
    output.WriteNumber("CreationTime", -5);
    output.WriteNumber("CompletedTime", 133000000000000000);
    EXPECT_EQ(msxml_layout::without_breaks(output.Serialize()),
              L"<OutputArguments><SnapshotId value=\"{6b29fc40-ca47-1067-b31d-00dd010662da}\"/>"
              L"<ErrDescription value=\"\"/><IsCompleted value=\"false\"/>"
              L"<CreationTime value=\"-5\"/><CompletedTime value=\"133000000000000000\"/>"
              L"</OutputArguments>");
    const std::wstring document = L"<HVBackupSpec>\r\n <VMs/>\u00e9\u4e2d\U0001F600</HVBackupSpec>";
    output.WriteEncoded("SnapshotXmlSpec", document);
    output.WriteEncoded("Empty", L"");
    output.WriteEncodedUtf8("Utf8", to_utf8(document));
    std::wstring request = output.Serialize();
    request.replace(request.find(L"<OutputArguments>"), 17, L"<InputArguments>");
    request.replace(request.find(L"</OutputArguments>"), 18, L"</InputArguments>");
    const InputArguments_t input(request);
    EXPECT_EQ(input.ReadEncoded("SnapshotXmlSpec"), document);
    EXPECT_EQ(input.ReadEncoded("Utf8"), document);
    EXPECT_EQ(input.ReadText("Empty"), L"");
}

TEST(Base64, KnownVectorsEveryByteAndABreakAnywhere) {
    const std::pair<const char*, const char*> pairs[] = {{"", ""},
                                                         {"f", "Zg=="},
                                                         {"fo", "Zm8="},
                                                         {"foo", "Zm9v"},
                                                         {"foob", "Zm9vYg=="},
                                                         {"fooba", "Zm9vYmE="},
                                                         {"\xfb\xff", "+/8="}};
    for (const auto& [bytes, text] : pairs) {
        EXPECT_EQ(wrap::base64_encode(bytes), text);
        EXPECT_EQ(wrap::base64_decode(text), bytes);
    }
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    for (std::size_t cut = 0; cut < 3; ++cut)
        EXPECT_EQ(wrap::base64_decode(wrap::base64_encode(bytes.substr(cut))), bytes.substr(cut));

    // The decoder stops quietly at a break and keeps exactly what came before.
    EXPECT_EQ(wrap::base64_decode("Zm9v YmFy"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9v\r\nYmFy"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9vYg==Zm9v"), "foob");
    EXPECT_EQ(wrap::base64_decode("Zm9v-_"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9v\xc3\xa9YmFy"), "foo");
    EXPECT_EQ(wrap::base64_decode("Zm9vYmE"), "fooba"); // a short last group yields what it can
    EXPECT_EQ(wrap::base64_decode("Zm9vY"), "foo");
    // Whole groups take a faster road than the last ones: a break must count wherever it falls.
    const std::string text = wrap::base64_encode(bytes);
    for (std::size_t at = 0; at <= text.size(); ++at) {
        const std::string decoded = wrap::base64_decode(text.substr(0, at) + "!" + text.substr(at));
        EXPECT_EQ(decoded, wrap::base64_decode(text.substr(0, at))) << at;
        EXPECT_EQ(decoded, bytes.substr(0, at * 3 / 4)) << at;
    }
}

} // namespace
