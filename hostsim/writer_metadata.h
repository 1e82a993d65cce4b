// The writers' metadata as a requester examines it: IVssExamineWriterMetadata for a
// writer of host.xml, IVssWMComponent for each of its components, IVssWMFiledesc for
// each file specification.
#pragma once

#include "compat/vss_api.h"
#include "hostsim/host.h"

#include <memory>

namespace hostsim {

// Hands out a new object with its first reference.
IVssExamineWriterMetadata* make_writer_metadata(std::shared_ptr<host_t> host, const writer_t& writer);

} // namespace hostsim
