// What the reading and the writing of the items list share, and the writing, which each
// platform does its own way: the platform's DOM where it serialises, and straight to text where
// the DOM would have to take the wide text apart and put it together again.
#pragma once

#include "documents/files_list.h"

#include <string>
#include <string_view>

namespace documents::detail {

// The document's names as the code spells them.
namespace ascii {
inline constexpr std::string_view root = "FilesList";
inline constexpr std::string_view item = "File";
inline constexpr std::string_view recursive = "Recursive";
inline constexpr std::string_view path = "Path";
inline constexpr std::string_view mask = "Mask";
inline constexpr std::string_view full_path = "FullPath";
inline constexpr std::string_view relative_path = "RelativePath";
inline constexpr std::string_view true_text = "true";
inline constexpr std::string_view false_text = "false";
} // namespace ascii

inline std::wstring widened(std::string_view name) {
    return std::wstring(name.begin(), name.end());
}

// The same in the wide form the DOM takes, made once: each item would otherwise build them anew.
struct list_names_t {
    std::wstring root = widened(ascii::root);
    std::wstring item = widened(ascii::item);
    std::wstring recursive = widened(ascii::recursive);
    std::wstring path = widened(ascii::path);
    std::wstring mask = widened(ascii::mask);
    std::wstring full_path = widened(ascii::full_path);
    std::wstring relative_path = widened(ascii::relative_path);
    std::wstring true_text = widened(ascii::true_text);
    std::wstring false_text = widened(ascii::false_text);
};

const list_names_t& names();

// The document's text, wide or as UTF-8; the caller adds the list's context line to a failure.
std::wstring write_document(const ItemsList& items);
std::string write_document_utf8(const ItemsList& items);

} // namespace documents::detail
