// System error texts as Windows words them, for comparing with expected texts on both builds.
#pragma once

#include "tests/support/under_wine.h"

#include <string>
#include <utility>

namespace wine_texts {

// Wine's message tables word a few system errors otherwise than Windows' do: under Wine, its
// wording is read as Windows'. Elsewhere the text stays as it is.
inline std::string as_windows(std::string text) {
    if (!test_support::under_wine())
        return text;
    static const std::pair<std::string, std::string> wordings[] = {
        {"Access denied.", "Access is denied."},
        {"File not found.", "The system cannot find the file specified."},
        {"Sharing violation.",
         "The process cannot access the file because it is being used by another process."},
        {"Invalid string UUID.", "The string universal unique identifier (UUID) is invalid."},
        {"Call failed.", "Unspecified error"},
        {"The server name could not be resolved.", "The server name or address could not be resolved"},
    };
    for (const auto& [wine, windows] : wordings)
        for (std::size_t at = text.find(wine); at != std::string::npos;
             at = text.find(wine, at + windows.size()))
            text.replace(at, wine.size(), windows);
    return text;
}

} // namespace wine_texts
