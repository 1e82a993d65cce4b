#include "snapshot/worker_com.h"

namespace impl {

// The simulated host's objects need no apartment.
void InitializeWorkerCom() {}
void UninitializeWorkerCom() noexcept {}

} // namespace impl
