// The table of the tool's commands, as the pipe server sees it.
#pragma once

#include "compat/ascii_case.h"
#include "invoke/invoke_dispatcher.h"

#include <map>
#include <string>

using CommandHandler = void (*)(InputArguments_t& input, OutputArguments_t& output);

class CMirrackDispatcher : public wrap::IInvokeDispatcher {
public:
    CMirrackDispatcher();
    ~CMirrackDispatcher() override = default;

    void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) override;

private:
    // Fixed at construction: nothing a client sends can add to it. Names are ordered with ASCII
    // letters folded, so a client may write a command in any case.
    const std::map<std::wstring, CommandHandler, compat::less_t> commands;
};
