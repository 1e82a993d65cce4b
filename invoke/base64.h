// Base64 with the standard alphabet, used to carry whole documents inside an attribute.
#pragma once

#include <string>
#include <string_view>

namespace wrap {

// No line breaks; the last group is padded with '=' to four characters.
std::string base64_encode(std::string_view bytes);
// Lenient by design: stops without failure at the end, at the first '=' or at the
// first character outside the alphabet, and returns what it has decoded so far.
std::string base64_decode(std::string_view text);

} // namespace wrap
