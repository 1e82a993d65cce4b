// What the error texts ask of the platform: its message tables and the thread's COM error object.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace exc {

// The system's own text for a code, closing line break included; nullopt when it has none.
std::optional<std::string> system_message_text(std::uint32_t code);
// The text of the internet-access module's message table (codes 12000 to 12174).
std::optional<std::string> internet_message_text(std::uint32_t code);
// The last resort for a code that neither table holds: the system category's own words for it.
std::string system_category_text(std::uint32_t code);
// Takes the calling thread's COM error object away and returns its description, if there is one.
std::optional<std::string> thread_error_description();

} // namespace exc
