// The requests of the server benchmark and the dispatcher that answers them, one definition for
// the server's side and for each platform's floor, so that both work on the same documents.
#pragma once

#include "documents/files_list.h"
#include "invoke/invoke_dispatcher.h"

#include <memory>
#include <string>

namespace server_bench {

// What the real commands write, without a task behind them.
std::shared_ptr<wrap::IInvokeDispatcher> make_dispatcher();

ItemsList make_items(int item_count);

// Whole request texts, "cmd:... xml:...".
extern const std::wstring small_request;
std::wstring files_list_request(int item_count);

// The request's document alone, as a floor that reads no frame is given it.
std::wstring document_of(const std::wstring& request);

// For the sample's text, which is ASCII.
std::wstring widen(const std::string& ascii);
std::string narrow(const std::wstring& ascii);

// A name that no other server on the machine holds: each server makes its pipe.
std::wstring fresh_pipe_name();

} // namespace server_bench
