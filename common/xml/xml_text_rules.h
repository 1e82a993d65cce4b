// What XML 1.0 refuses in a document's text that pugixml lets through: characters outside the
// language's set (U+0001, say) and references to entities that nothing defines (&bogus;).
#pragma once

#include <string_view>

// The UTF-8 text of a whole document, before it is parsed.
bool breaks_xml_text_rules(std::string_view utf8);
