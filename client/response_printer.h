// A response in the form a person reads: arguments one per line, encoded documents
// decoded and indented, the lines of an error one below the other.
#pragma once

#include "client/response.h"

#include <iosfwd>
#include <string>

namespace client {

// Does the protocol carry this argument Base64-encoded?
bool IsEncodedArgument(const std::wstring& name);

void PrintResponse(const CResponse& response, std::ostream& out);

} // namespace client
