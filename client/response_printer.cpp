#include "client/response_printer.h"

#include "common/format/format.h"

#include <array>
#include <ostream>
#include <sstream>

namespace client {

namespace {

const char* const indent = "    ";

void print_indented(const std::string& text, std::ostream& out) {
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        out << indent << line << '\n';
    }
}

void print_argument(const response_argument_t& argument, std::ostream& out) {
    const std::string name = to_ansi_nothrow(argument.name);
    const bool value_only = argument.attributes.size() == 1 && argument.attributes[0].first == L"value";
    if (!value_only) {
        out << name << ':';
        for (const auto& [key, value] : argument.attributes)
            out << ' ' << to_ansi_nothrow(key) << "=\"" << to_ansi_nothrow(value) << '"';
        out << '\n';
        return;
    }
    const std::wstring& value = argument.attributes[0].second;
    if (!IsEncodedArgument(argument.name) || value.empty()) {
        out << name << ": " << to_ansi_nothrow(value) << '\n';
        return;
    }
    out << name << " (decoded):\n";
    print_indented(to_ansi_nothrow(DecodeEncodedValue(value)), out);
}

} // namespace

bool IsEncodedArgument(const std::wstring& name) {
    static const std::array<const wchar_t*, 8> encoded = {
        L"SnapshotXmlSpec", L"BackupDoc", L"SnapshotIDsList", L"WriterDoc",
        L"SnapshotsXML",    L"FilesList", L"InPathsXML",      L"OutPathsXML"};
    for (const wchar_t* known : encoded) {
        if (iequals(name, known))
            return true;
    }
    return false;
}

void PrintResponse(const CResponse& response, std::ostream& out) {
    switch (response.Kind()) {
    case response_kind_t::success:
        out << (response.Arguments().empty() ? "OK (no output arguments)\n" : "OK\n");
        for (const response_argument_t& argument : response.Arguments())
            print_argument(argument, out);
        break;
    case response_kind_t::failure:
        out << "ERROR\n";
        print_indented(to_ansi_nothrow(response.Body()), out);
        break;
    case response_kind_t::unknown:
        out << "UNEXPECTED RESPONSE\n";
        print_indented(to_ansi_nothrow(response.Frame()), out);
        break;
    }
}

} // namespace client
