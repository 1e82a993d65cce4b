// Documents as the DOM's text shows them, for comparing with expected texts on both builds.
#pragma once

#include "tests/support/under_wine.h"

#include <string>

namespace msxml_layout {

// MSXML ends a document's text with a line break; Wine's MSXML also breaks the line and indents
// with tabs between elements, where Windows' writes nothing. The comparison leaves out such white
// space after an element: at the end on Windows, anywhere under Wine, where no document of the
// system holds it on its own.
template <class Text> Text without_breaks(const Text& text) {
#ifdef _WIN32
    const bool anywhere = test_support::under_wine();
    Text kept;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i;
        bool breaks = false;
        if (!kept.empty() && kept.back() == '>') {
            for (; end < text.size() &&
                   (text[end] == '\r' || text[end] == '\n' || text[end] == '\t' || text[end] == ' ');
                 ++end)
                breaks = breaks || text[end] == '\n';
        }
        if (breaks && (end == text.size() || (anywhere && text[end] == '<'))) {
            i = end;
            continue;
        }
        kept += text[i++];
    }
    return kept;
#else
    return text;
#endif
}

} // namespace msxml_layout
