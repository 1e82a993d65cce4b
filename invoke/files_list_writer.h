// What the reading and the writing of the items list share, and the writing, which each
// platform does its own way: the platform's DOM where it serialises, and straight to text where
// the DOM would have to take the wide text apart and put it together again.
#pragma once

#include "invoke/files_list.h"

#include <string>

namespace files_list_impl {

// Made once: each item would otherwise build them anew.
struct list_names_t {
    std::wstring root = L"FilesList";
    std::wstring item = L"File";
    std::wstring recursive = L"Recursive";
    std::wstring path = L"Path";
    std::wstring mask = L"Mask";
    std::wstring full_path = L"FullPath";
    std::wstring relative_path = L"RelativePath";
    std::wstring true_text = L"true";
    std::wstring false_text = L"false";
};

const list_names_t& names();

// The document's text, wide or as UTF-8; the caller adds the list's context line to a failure.
std::wstring write_document(const ItemsList& items);
std::string write_document_utf8(const ItemsList& items);

} // namespace files_list_impl
