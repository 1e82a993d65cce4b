// The walk over the writers' metadata, the cache of the wanted writer, and the readers of its
// components and files.
#include "vss_test_support.h"

#include "vssutils/writer_components.h"
#include "vssutils/writer_metadata.h"

#include <gtest/gtest.h>

using namespace VSSUtils;
using namespace vssutils_test;

namespace {

const GUID system_writer_id = {0xe8132975, 0x6f93, 0x4464, {0xa5, 0x3e, 0x10, 0x50, 0x25, 0x3a, 0xe2, 0x20}};

CVssMetaCache walk(const std::string& extra = "") {
    scratch_host_t host(sample_host_xml(extra));
    CVssMetaCache cache(hyperv_writer_id);
    EnumWritersMetadata(initialised_backup(), cache, nullptr);
    return cache;
}

} // namespace

TEST(WriterMetadata, TheWantedWriterIsCachedWithItsComponentsAndFilesAndEveryOtherOnlySeen) {
    scratch_host_t host;
    CVssMetaCache cache(hyperv_writer_id);
    EnumWritersMetadata(initialised_backup(), cache, nullptr);
    EXPECT_EQ(cache.SeenWriters(), (std::vector<VSS_ID>{hyperv_writer_id, system_writer_id}));
    auto hyperv = cache.Find(hyperv_writer_id);
    ASSERT_TRUE(hyperv);
    EXPECT_TRUE(hyperv->metadata);
    EXPECT_EQ(hyperv->writerInstanceId, hyperv_writer_instance);
    EXPECT_EQ(hyperv->writerName.text(), L"Microsoft Hyper-V VSS Writer");
    EXPECT_EQ(cache.Get(hyperv_writer_id), hyperv);
    EXPECT_FALSE(cache.Find(system_writer_id));
    // Its components and files are read as the writer describes them.
    auto metadata = hyperv->metadata;

    SWmComponentInfo vm1 = GetWmComponentInfo(GetWmComponent(metadata, 0));
    EXPECT_EQ(vm1.componentName, vm1_component);
    EXPECT_EQ(vm1.type, VSS_CT_FILEGROUP);
    EXPECT_EQ(vm1.fileCount, 2u);
    auto vm2Component = GetWmComponent(metadata, 1);
    EXPECT_EQ(GetWmComponentInfo(vm2Component).logicalPath, L"") << "no logical path reads as an empty one";

    auto file = GetWmFile(GetWmComponent(metadata, 0), 0);
    EXPECT_EQ(GetWmFilePath(file), L"C:\\VMs\\vm1\\");
    EXPECT_EQ(GetWmFileMask(file), L"vm1.vhdx");
    EXPECT_FALSE(GetWmFileRecursive(file));
    EXPECT_TRUE(GetWmFileRecursive(GetWmFile(vm2Component, 0)));
}

// A writer whose metadata or identity cannot be read is left out with a warning, and the walk goes on.
TEST(WriterMetadata, AnUnreadableWriterIsLeftOutAndTheWalkGoesOn) {
    const std::pair<std::string, std::string> faults[] = {
        {R"(<Fault op="GetIdentity" match="Hyper-V" hr="0x80042302"/>)",
         "Failed to retrieve properties of the VSS writer (using IVssExamineWriterMetadata)."},
        {R"(<Fault op="GetWriterMetadata" nth="1" hr="0x80042302"/>)",
         "Failed to get specific writer metadata. Index: '0'"}};
    for (const auto& [fault, warning] : faults) {
        SCOPED_TRACE(fault);
        log_capture_t log;
        CVssMetaCache cache = walk(fault);
        EXPECT_EQ(cache.SeenWriters(), std::vector<VSS_ID>{system_writer_id});
        EXPECT_TRUE(log.has(warning));
        EXPECT_EQ(failure_lines([&] { cache.Get(hyperv_writer_id); }),
                  std::vector<std::string>{
                      "There is no metadata for writer '{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}'."});
    }
}
