// mirrack-client [--pipe NAME] [--timeout MS] [--raw] SUBCOMMAND ...
#include "client/subcommand.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "invoke/invoke_server_com.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>

namespace client {

namespace {

struct parsed_line_t {
    client_options_t options;
    bool help = false;
    std::vector<std::string> rest; // the subcommand's name and its arguments
};

void print_usage(std::ostream& out) {
    out << "Usage: mirrack-client --pipe NAME [--timeout MS] [--raw] SUBCOMMAND ...\n"
           "Speaks to a Mirrack process over its pipe \\\\.\\pipe\\NAME.\n\n"
           "Subcommands:\n";
    for (const subcommand_t& subcommand : Subcommands())
        out << "  " << subcommand.usage << "\n      " << subcommand.summary << '\n';
    out << "\nExit status: 0 success response, 1 error response, 2 usage, 3 no answer from the server.\n";
}

DWORD parse_timeout(const std::string& text) {
    char* end = nullptr;
    const unsigned long value = std::strtoul(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0')
        throw usage_error_t{"--timeout takes milliseconds: '" + text + "'."};
    return static_cast<DWORD>(value);
}

// The value of an option: "--name=value" or "--name value".
bool take_option(const std::vector<std::string>& line, std::size_t& i, const std::string& name,
                 std::string& value) {
    const std::string& word = line[i];
    if (word.rfind(name + "=", 0) == 0) {
        value = word.substr(name.size() + 1);
        return true;
    }
    if (word != name)
        return false;
    if (i + 1 >= line.size())
        throw usage_error_t{name + " needs a value."};
    value = line[++i];
    return true;
}

parsed_line_t parse_line(const std::vector<std::string>& line) {
    parsed_line_t parsed;
    std::size_t i = 0;
    for (; i < line.size() && line[i].rfind("-", 0) == 0; ++i) {
        std::string value;
        if (take_option(line, i, "--pipe", value))
            parsed.options.pipeName = to_unicode(value);
        else if (take_option(line, i, "--timeout", value))
            parsed.options.connectTimeoutMs = parse_timeout(value);
        else if (line[i] == "--raw")
            parsed.options.raw = true;
        else if (line[i] == "--help" || line[i] == "-h")
            parsed.help = true;
        else
            throw usage_error_t{"Unknown option '" + line[i] + "'."};
    }
    parsed.rest.assign(line.begin() + static_cast<std::ptrdiff_t>(i), line.end());
    return parsed;
}

void print_subcommand_usage(std::ostream& out, const subcommand_t& subcommand) {
    out << "Usage: mirrack-client" << (subcommand.namesItsPipes ? "" : " --pipe NAME")
        << " [--timeout MS] [--raw] " << subcommand.usage << '\n'
        << "      " << subcommand.summary << '\n';
}

bool asks_for_help(const std::vector<std::string>& words) {
    return std::find_if(words.begin(), words.end(), [](const std::string& word) {
               return word == "--help" || word == "-h";
           }) != words.end();
}

const subcommand_t& find_subcommand(const std::string& name) {
    for (const subcommand_t& subcommand : Subcommands()) {
        if (name == subcommand.name)
            return subcommand;
    }
    throw usage_error_t{"Unknown subcommand '" + name + "'."};
}

} // namespace

int RunClient(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    try {
        // The documents that the client reads and writes are COM objects where the DOM is COM.
        const wrap::CRequestComScope com;
        const parsed_line_t line = parse_line(arguments);
        if (line.help) {
            print_usage(out);
            return exit_success;
        }
        if (line.rest.empty())
            throw usage_error_t{"A subcommand is needed."};
        const subcommand_t& subcommand = find_subcommand(line.rest.front());
        const std::vector<std::string> words(line.rest.begin() + 1, line.rest.end());
        // Asked of any subcommand, before it reads its arguments or speaks to a server.
        if (asks_for_help(words)) {
            print_subcommand_usage(out, subcommand);
            return exit_success;
        }
        if (line.options.pipeName.empty() && !subcommand.namesItsPipes)
            throw usage_error_t{"--pipe NAME is needed."};
        return subcommand.run(line.options, words, out);
    } catch (const usage_error_t& error) {
        err << "mirrack-client: " << error.text << "\n\n";
        print_usage(err);
        return exit_usage;
    } catch (const std::exception& error) {
        err << "mirrack-client: " << exc::exception_text(error) << '\n';
        return exit_failure;
    }
}

} // namespace client
