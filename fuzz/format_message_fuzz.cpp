// The %1 template formatter: a template and up to four arguments, fields separated by
// 0xFF, through every overload in both widths.
#include "common/format/format.h"
#include "fuzz/fuzz_input.h"

namespace {

bool has_marker_sign(const std::string& text) {
    return text.find('%') != std::string::npos;
}

void check_narrow(const std::vector<std::string>& fields) {
    const std::string& fmt = fields[0];
    std::vector<std::string> args(fields.begin() + 1, fields.end());
    while (args.size() < 4)
        args.emplace_back();
    const std::string four = format_message(fmt, args[0], args[1], args[2], args[3]);
    fuzz::require(format_message(fmt, args) == four, "the list form formats as the four-argument one");
    format_message(fmt, args[0]);
    format_message(fmt, args[0], args[1]);
    format_message(fmt, args[0], args[1], args[2]);
    if (!has_marker_sign(fmt))
        fuzz::require(four == fuzz::up_to_zero(fmt), "a template without markers is its own text");
    const std::string copied = format_message("%1", fmt, args[0]);
    fuzz::require(fuzz::up_to_zero(copied) == fuzz::up_to_zero(fmt), "an argument is copied, never expanded");
}

void check_wide(const std::vector<std::string>& fields) {
    const std::wstring fmt = fuzz::wide_text(fields[0]);
    const std::wstring a1 = fields.size() > 1 ? fuzz::wide_text(fields[1]) : std::wstring();
    const std::wstring a2 = fields.size() > 2 ? fuzz::wide_text(fields[2]) : std::wstring();
    const std::wstring two = format_message_w(fmt, a1, a2);
    const std::wstring one = format_message_w(fmt, a1);
    if (fmt.find(L'%') == std::wstring::npos)
        fuzz::require(one == fuzz::up_to_zero(fmt) && two == one,
                      "a template without markers is its own text");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> fields = fuzz::split_fields(fuzz::bytes_of(data, size), 5);
    check_narrow(fields);
    check_wide(fields);
    return 0;
}
