// A request document and every argument reader over every argument name the commands use.
#include "common/exc/convert.h"
#include "common/format/format.h"
#include "fuzz/command_arguments.h"
#include "fuzz/fuzz_input.h"
#include "invoke/arguments.h"

#include <exception>
#include <optional>

namespace {

template <class Read> auto attempt(Read read) -> std::optional<decltype(read())> {
    try {
        return read();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void read_with_every_reader(const InputArguments_t& input, const std::string& name) {
    const auto text = attempt([&] { return input.ReadText(name); });
    const auto multibyte = attempt([&] { return input.ReadMultibyte(name); });
    const auto guid = attempt([&] { return input.ReadGuid(name); });
    const auto boolean = attempt([&] { return input.ReadBool(name); });
    const auto encoded = attempt([&] { return input.ReadEncoded(name); });
    fuzz::require(text.has_value() == multibyte.has_value(), "text and multibyte readers agree on a value");
    fuzz::require(text || (!guid && !boolean && !encoded), "no reader finds a value the text reader misses");
    if (text)
        fuzz::require(boolean.has_value(), "any present value reads as a boolean");
    if (multibyte)
        fuzz::require(from_utf8(*multibyte) == fuzz::up_to_zero(*text), "multibyte is the text in UTF-8");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring xml = fuzz::wide_text(fuzz::bytes_of(data, size));
    std::optional<InputArguments_t> input;
    try {
        input.emplace(xml);
    } catch (const std::exception&) {
        return 0;
    }
    for (const fuzz::command_argument_t& argument : fuzz::command_arguments)
        read_with_every_reader(*input, argument.name);
    OutputArguments_t output;
    fuzz::read_like_the_commands(*input, output);
    const std::wstring response = output.Serialize();
    fuzz::require(attempt([&] { return dom_load(response); }).has_value(),
                  "the response document reads back");
    return 0;
}
