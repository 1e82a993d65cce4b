// The writers that a backup enables, by class id, with the label that names them in a failure.
#pragma once

#include "compat/win_types.h"

namespace VSSUtils {

// {66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}
const GUID HyperVWriterClassId = {
    0x66841cd4, 0x6ded, 0x4f4b, {0x8f, 0x17, 0xfd, 0x23, 0xf8, 0xdd, 0xc3, 0xde}};
const char* const HyperVWriterLabel = "Hyper-V";

// Kept as text and turned into an id where it is used.
const char* const CsvWriterClassIdText = "{1072ae1c-e5a7-4ea1-9e4a-6f7964656570}";
const char* const CsvWriterLabel = "CSV";

} // namespace VSSUtils
