// COM on a task's worker: every VSS object of a task lives in the worker's own
// apartment.
#pragma once

namespace impl {

// Throws exc::com_exc_t "Cannot initialize COM runtime".
void InitializeWorkerCom();
void UninitializeWorkerCom() noexcept;

} // namespace impl
