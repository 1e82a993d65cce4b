#include "invoke/arguments.h"

#include "common/exc/convert.h"
#include "common/exc/exc.h"
#include "common/format/format.h"
#include "invoke/base64.h"

#include <charconv>

namespace {

// Made once: each call would otherwise build them anew.
struct document_names_t {
    std::wstring input_root = L"InputArguments";
    std::wstring value = L"value";
};

const document_names_t& names() {
    static const document_names_t instance;
    return instance;
}

constexpr std::string_view value_attribute = "value";

// Argument names are ASCII constants of the code.
std::wstring widen_name(const std::string& name) {
    return std::wstring(name.begin(), name.end());
}

dom_element_t find_argument(const dom_document_t& document, const std::string& name) {
    return exc::traced("Failed to find argument node '%1'.", name, [&] {
        const dom_element_t root = dom_required_child(document, names().input_root);
        return dom_optional_child(root, widen_name(name));
    });
}

dom_element_t defined_argument(const dom_document_t& document, const std::string& name) {
    dom_element_t argument = find_argument(document, name);
    if (argument.empty())
        throw exc::runtime_exc_t("Value of the argument '%1' is not defined.", name);
    return argument;
}

std::wstring read_argument_value(const dom_document_t& document, const std::string& name) {
    return dom_get_attribute(defined_argument(document, name), names().value);
}

} // namespace

InputArguments_t::InputArguments_t(const std::wstring& xml) : document_(dom_load(xml)) {}

InputArguments_t::InputArguments_t(dom_document_t document) : document_(std::move(document)) {}

std::wstring InputArguments_t::ReadText(const std::string& name) const {
    return exc::traced("Failed to retrieve value of the unicode attribute '%1'.", name,
                       [&] { return read_argument_value(document_, name); });
}

namespace {

// The value is lent to `use` rather than copied: an encoded argument carries a whole document.
void lend_multibyte(const dom_document_t& document, const std::string& name,
                    const std::function<void(std::string_view)>& use) {
    exc::traced("Failed to retrieve value of the multibyte attribute '%1'.", name,
                [&] { dom_read_attribute_utf8(defined_argument(document, name), names().value, use); });
}

} // namespace

std::string InputArguments_t::ReadMultibyte(const std::string& name) const {
    std::string value;
    lend_multibyte(document_, name, [&](std::string_view lent) { value = lent; });
    return value;
}

GUID InputArguments_t::ReadGuid(const std::string& name) const {
    return exc::traced("Failed to retrieve value of the GUID attribute '%1'.", name,
                       [&] { return string_to_guid(read_argument_value(document_, name)); });
}

bool InputArguments_t::ReadBool(const std::string& name) const {
    return exc::traced("Failed to retrieve value of the boolean attribute '%1'.", name,
                       [&] { return string_to_bool(to_utf8(read_argument_value(document_, name))); });
}

namespace {

// The decoded bytes up to their first zero. Decoding cannot fail but for want of memory.
std::string decoded_bytes(const dom_document_t& document, const std::string& name) {
    std::string bytes;
    lend_multibyte(document, name, [&](std::string_view encoded) { bytes = wrap::base64_decode(encoded); });
    const std::size_t zero = bytes.find('\0');
    if (zero != std::string::npos)
        bytes.resize(zero);
    return bytes;
}

} // namespace

// Only the reading carries the reader's line; a conversion failure stands as it is.
std::wstring InputArguments_t::ReadEncoded(const std::string& name) const {
    return from_utf8(decoded_bytes(document_, name));
}

std::string InputArguments_t::ReadEncodedUtf8(const std::string& name) const {
    return utf8_round_trip(decoded_bytes(document_, name));
}

OutputArguments_t::OutputArguments_t()
    : document_(dom_create_document()), root_(dom_add_child(document_, std::string_view("OutputArguments"))) {
}

dom_element_t OutputArguments_t::CreateElement(const std::string& name) {
    return dom_add_child(root_, std::string_view(name));
}

void OutputArguments_t::WriteText(const std::string& name, const std::wstring& value) {
    dom_add_child_with_attribute(root_, name, value_attribute, value);
}

// Values that are ASCII by their making go in as they are printed, without wide text between.
void OutputArguments_t::WriteGuid(const std::string& name, const GUID& value) {
    dom_add_child_with_attribute(root_, name, value_attribute, guid_to_string(value).c_str());
}

void OutputArguments_t::WriteBool(const std::string& name, bool value) {
    dom_add_child_with_attribute(root_, name, value_attribute, value ? "true" : "false");
}

void OutputArguments_t::WriteNumber(const std::string& name, std::int64_t value) {
    char digits[24];
    *std::to_chars(digits, digits + sizeof digits - 1, value).ptr = '\0';
    dom_add_child_with_attribute(root_, name, value_attribute, digits);
}

void OutputArguments_t::WriteEncoded(const std::string& name, const std::wstring& value) {
    WriteEncodedUtf8(name, to_utf8(value));
}

void OutputArguments_t::WriteEncodedUtf8(const std::string& name, std::string_view value) {
    dom_add_child_with_attribute(root_, name, value_attribute, wrap::base64_encode(value).c_str());
}

std::wstring OutputArguments_t::Serialize() const {
    return dom_serialize(document_);
}

std::string OutputArguments_t::SerializeUtf8() const {
    return dom_serialize_utf8(document_);
}
