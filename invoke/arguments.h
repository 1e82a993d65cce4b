// The request and response documents of a command: each argument is a child
// element named after it, with its value in the attribute "value".
#pragma once

#include "common/xml/dom.h"
#include "compat/win_types.h"

#include <cstdint>
#include <string>
#include <string_view>

// The parsed request: <InputArguments><Name value="..."/>...</InputArguments>.
// Argument elements are found without regard to case; the first of a name counts.
class InputArguments_t {
public:
    // Parses the request document text; not well-formed text throws.
    explicit InputArguments_t(const std::wstring& xml);
    explicit InputArguments_t(dom_document_t document);

    const dom_document_t& document() const noexcept { return document_; }

    std::wstring ReadText(const std::string& name) const;
    // The value as UTF-8.
    std::string ReadMultibyte(const std::string& name) const;
    // With or without braces.
    GUID ReadGuid(const std::string& name) const;
    // Lenient on purpose: only "false" (any case) and "0" are false.
    bool ReadBool(const std::string& name) const;
    // Base64 of UTF-8; decoding stops quietly at the first character it cannot use.
    std::wstring ReadEncoded(const std::string& name) const;
    // The same text as UTF-8, for documents that go on to the parser as UTF-8.
    std::string ReadEncodedUtf8(const std::string& name) const;

private:
    dom_document_t document_;
};

// The response under construction: <OutputArguments> with one child per
// argument, in the order written.
class OutputArguments_t {
public:
    OutputArguments_t();

    const dom_document_t& document() const noexcept { return document_; }
    const dom_element_t& root() const noexcept { return root_; }

    void WriteText(const std::string& name, const std::wstring& value);
    void WriteGuid(const std::string& name, const GUID& value);
    void WriteBool(const std::string& name, bool value);
    void WriteNumber(const std::string& name, std::int64_t value);
    void WriteEncoded(const std::string& name, const std::wstring& value);
    // The same for text that is UTF-8 already.
    void WriteEncodedUtf8(const std::string& name, std::string_view value);
    // An argument of its own form (attributes other than "value").
    dom_element_t CreateElement(const std::string& name);

    // The document text, without XML declaration.
    std::wstring Serialize() const;
    std::string SerializeUtf8() const;

private:
    dom_document_t document_;
    dom_element_t root_;
};

namespace wrap {
using ::InputArguments_t;
using ::OutputArguments_t;
} // namespace wrap
