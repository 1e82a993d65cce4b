#include "common/exc/exc.h"
#include "common/format/format.h"
#include "invoke/arguments.h"
#include "invoke/pipe_invoke_server.h"
#include "invoke/pipe_text.h"
#include "msxml_layout.h"
#include "pipe_test_support.h"
#include "tests/common/log_test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

// Records what the server hands on; "Fail" throws a two-line failure.
class recording_dispatcher_t : public wrap::IInvokeDispatcher {
public:
    void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) override {
        invoked.push_back(command);
        if (command == L"Fail") {
            try {
                throw exc::runtime_exc_t("The cause.");
            } catch (const std::exception& e) {
                exc::rethrow_with_trace("The step.", e);
            }
        }
        if (command == L"Echo")
            output.WriteText("Said", input.ReadText("Say"));
    }
    using IInvokeDispatcher::OnCallFailed;
    void OnCallFailed(std::string_view command, std::string_view request, const std::exception& e) override {
        failed.push_back(std::string(command) + "|" + std::string(request));
        IInvokeDispatcher::OnCallFailed(command, request, e);
    }
    std::vector<std::wstring> invoked;
    std::vector<std::string> failed;
};

struct null_what_t : std::exception {
    const char* what() const noexcept override { return nullptr; }
};

class ServerRequests : public ::testing::Test {
protected:
    std::shared_ptr<recording_dispatcher_t> dispatcher = std::make_shared<recording_dispatcher_t>();
    wrap::CPipeInvokeSrv server{pipe_test::fresh_pipe_name(), dispatcher};
};

} // namespace

TEST_F(ServerRequests, ACommandAnswersWithItsDocumentAndNoLineEndAndFailuresOrBadRequestsWithAllTheirLines) {
    EXPECT_EQ(msxml_layout::without_breaks(server.ExecuteRequest(
                  L"CMD:Echo XML:<InputArguments><Say value=\"hi\"/></InputArguments>")),
              L"xml:<OutputArguments><Said value=\"hi\"/></OutputArguments>");
    EXPECT_EQ(server.ExecuteRequest(L"cmd:Nothing xml:<InputArguments/>"), L"xml:<OutputArguments/>");
    EXPECT_EQ(wrap::CPipeInvokeSrv::MakeXmlResponse(L"<a/>\r\n"), L"xml:<a/>");
    // Failures become error frames with all their lines.
    EXPECT_EQ(server.ExecuteRequest(L"cmd:Fail xml:<InputArguments/>"), L"err:The cause.\n--tr:The step.");
    EXPECT_EQ(server.ExecuteRequest(L"hello"), L"err:Unknown type of request: 'hello'.");
    const std::wstring no_document = server.ExecuteRequest(L"cmd:Echo xml:");
    EXPECT_EQ(no_document.rfind(L"err:", 0), 0u);
    EXPECT_NE(no_document.find(L"Failed to load XML document"), std::wstring::npos);
    win::pipes::byte_buffer_t unterminated = win::pipes::EncodeFrameText(L"cmd:Echo xml:<a/>");
    unterminated.erase(unterminated.end() - 2, unterminated.end());
    EXPECT_EQ(win::pipes::DecodeFrameText(server.ExecuteFrame(unterminated)).text,
              L"err:Unknown type of request: 'cmd:Echo xml:<a/>'.");

    // Only a well-formed request reaches the commands; every failure is reported with its request.
    EXPECT_EQ(dispatcher->invoked, (std::vector<std::wstring>{L"Echo", L"Nothing", L"Fail"}));
    EXPECT_EQ(dispatcher->failed, (std::vector<std::string>{"Fail|<InputArguments/>", "|", "Echo|", "|"}));
    EXPECT_EQ(wrap::CPipeInvokeSrv::MakeErrorResponse(null_what_t()), L"err:n/a");
    // The prefixes ignore case, the name ends at the first space, and the document follows it.
    for (const wchar_t* bad : {L"cmd:Echo", L"cmd:Echo  xml:<a/>", L"cmd:", L"cm", L"", L"xml:<a/>",
                               L"cmd:X xm", L"cmd:X html:<a/>"})
        EXPECT_EQ(server.ExecuteRequest(bad), L"err:Unknown type of request: '" + std::wstring(bad) + L"'.");
    server.ExecuteRequest(L"cmd: xml:<InputArguments/>");
    EXPECT_EQ(dispatcher->invoked.back(), L"");
}

class ServerTrace : public log_test::log_file_test {};

// One frame gets one answer whichever parser stands behind the server: characters XML leaves
// out are refused, whether the frame's UTF-16 holds them (a surrogate without its partner, here
// where the '?' stands) or a reference names them; a file that the document names is never read,
// so nothing of it reaches answer or log. The trace carries whole documents: nothing in a command
// or a document reads as a marker of the log's formatter.
TEST_F(ServerTrace, OneFrameGetsOneAnswerAndNothingOutsideTheDocumentIsRead) {
    const std::filesystem::path outside =
        std::filesystem::temp_directory_path() /
        ("mirrack-outside-" + std::to_string(test_env::process_id()) + ".dtd");
    std::ofstream(outside) << "OUTSIDE-TEXT <!ENTITY e 'OUTSIDE-TEXT'> <<<";
    const std::wstring file = outside.wstring();
    const std::wstring refused;
    const struct {
        std::wstring doctype, value, said;
    } frames[] = {
        {L"<!DOCTYPE x SYSTEM \"" + file + L"\">", L"ab", L"ab"},
        {L"<!DOCTYPE x SYSTEM \"" + file + L"\">", L"a&e;b", refused},
        {L"<!DOCTYPE x [<!ENTITY e SYSTEM \"" + file + L"\">]>", L"a&e;b", refused},
        {L"", L"a\uFFFFb", refused},
        {L"", L"a?b", refused},
        {L"", L"%1 %2", L"%1 %2"},
    };
    auto dispatcher = std::make_shared<recording_dispatcher_t>();
    wrap::CPipeInvokeSrv server(pipe_test::fresh_pipe_name(), dispatcher);
    for (const auto& [doctype, value, said] : frames) {
        const std::wstring request =
            L"cmd:Echo xml:" + doctype + L"<InputArguments><Say value=\"" + value + L"\"/></InputArguments>";
        win::pipes::byte_buffer_t frame = win::pipes::EncodeFrameText(request);
        if (value == L"a?b") {
            frame[2 * request.find(L"a?b") + 2] = 0x00;
            frame[2 * request.find(L"a?b") + 3] = 0xDC;
        }
        const std::wstring answer = win::pipes::DecodeFrameText(server.ExecuteFrame(frame)).text;
        const std::string shown = to_ansi_nothrow(value);
        if (said.empty()) {
            EXPECT_EQ(answer.rfind(L"err:", 0), 0u) << shown;
            EXPECT_NE(answer.find(L"Failed to load XML document '"), std::wstring::npos) << shown;
        } else {
            EXPECT_EQ(msxml_layout::without_breaks(answer),
                      L"xml:<OutputArguments><Said value=\"" + said + L"\"/></OutputArguments>")
                << shown;
        }
        EXPECT_EQ(answer.find(L"OUTSIDE-TEXT"), std::wstring::npos) << shown;
    }
    EXPECT_FALSE(log_has("OUTSIDE-TEXT"));
    std::filesystem::remove(outside);

    server.ExecuteRequest(L"cmd:%1x xml:<InputArguments/>");
    std::string log;
    // Each line of a message carries the tag; what follows it is the message's own text.
    for (const std::string& line : bodies())
        log += line.substr(line.find("| ") + 2) + "\n";
    log = msxml_layout::without_breaks(log);
    for (const char* trace : {"[SoapEnter] Echo:<InputArguments><Say value=\"%1 %2\"/></InputArguments>",
                              "[SoapExit] Echo:<OutputArguments><Said value=\"%1 %2\"/></OutputArguments>",
                              "[SoapEnter] %1x:<InputArguments/>", "[SoapExit] %1x:<OutputArguments/>"})
        EXPECT_NE(log.find(trace), std::string::npos) << trace << "\n" << log;
}
