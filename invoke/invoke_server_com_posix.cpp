#include "invoke/invoke_server_com.h"

namespace wrap {

// The documents need no COM here.
CRequestComScope::CRequestComScope() = default;
CRequestComScope::~CRequestComScope() = default;

} // namespace wrap
