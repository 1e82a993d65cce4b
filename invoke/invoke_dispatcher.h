// What the pipe server knows of the commands: a name goes in with its request
// document, a response document comes out. The trace of each call lives here so
// that every dispatcher writes the same lines.
#pragma once

#include <exception>
#include <memory>
#include <string>
#include <string_view>

class InputArguments_t;
class OutputArguments_t;

namespace wrap {

class IInvokeDispatcher {
public:
    virtual ~IInvokeDispatcher() = default;

    // Runs one command; whatever it throws becomes the client's error frame.
    virtual void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) = 0;

    // Kept for the layout of the interface; nothing calls it. Taking the pointers by
    // value means a call only drops the caller's references.
    virtual void OnReservedHook(std::shared_ptr<void> first, std::shared_ptr<void> second);

    virtual void OnSoapEnter(std::wstring_view command, std::wstring_view request);
    virtual void OnSoapExit(std::wstring_view command, std::wstring_view response);
    // The same lines from text that is narrow already, as the server has it where wide strings
    // are four bytes a character: documents of megabytes are not widened to be narrowed again.
    virtual void OnSoapEnter(std::string_view command, std::string_view request);
    virtual void OnSoapExit(std::string_view command, std::string_view response);
    virtual void OnCallFailed(std::string_view command, std::string_view request,
                              const std::exception& error);
    virtual void OnCallFailed(std::wstring_view command, std::wstring_view request,
                              const std::exception& error);
};

} // namespace wrap
