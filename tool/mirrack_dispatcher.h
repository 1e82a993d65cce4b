// The table of the tool's commands, as the pipe server sees it.
#pragma once

#include "invoke/invoke_dispatcher.h"

#include <map>
#include <string>

using CommandHandler = void (*)(InputArguments_t& input, OutputArguments_t& output);

// Orders command names with ASCII letters folded, so a client may write a
// command in any case.
struct CommandNameLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const;
};

class CMirrackDispatcher : public wrap::IInvokeDispatcher {
public:
    CMirrackDispatcher();
    ~CMirrackDispatcher() override = default;

    void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) override;

private:
    // Fixed at construction: nothing a client sends can add to it.
    const std::map<std::wstring, CommandHandler, CommandNameLess> commands;
};
