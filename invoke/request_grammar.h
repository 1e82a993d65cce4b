// "cmd:<name> xml:<document>": the grammar of a request, over whichever text the server holds.
#pragma once

#include "compat/ascii_case.h"

#include <string_view>

namespace wrap::request_grammar {

// Views into the request rather than copies: the document may run to megabytes.
template <class Char>
bool parse(std::basic_string_view<Char> request, std::basic_string_view<Char>& command,
           std::basic_string_view<Char>& document) {
    constexpr std::string_view command_prefix = "cmd:";
    constexpr std::string_view document_prefix = "xml:";
    if (!compat::istarts_with(request, command_prefix) || request.size() == command_prefix.size())
        return false;
    const std::size_t space = request.find(Char(' '), command_prefix.size());
    if (space == request.npos || !compat::istarts_with(request.substr(space + 1), document_prefix))
        return false;
    command = request.substr(command_prefix.size(), space - command_prefix.size());
    document = request.substr(space + 1 + document_prefix.size());
    return true;
}

// The line end that closes a serialised document, which neither a frame nor a trace line carries.
template <class Char> std::basic_string_view<Char> without_trailing_crlf(std::basic_string_view<Char> text) {
    if (text.size() >= 2 && text[text.size() - 2] == Char('\r') && text.back() == Char('\n'))
        text.remove_suffix(2);
    return text;
}

} // namespace wrap::request_grammar
