// The host as several processes see it: a transportable set made by one and imported by
// another on a second host, and shadow copies left by a process that died.
#include "scratch_host.h"

#include "compat/cluster_api.h"
#include "hostsim/host_access.h"
#include "hostsim/wide_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

using namespace hostsim_test;
using compat::com_ptr_t;

namespace {

// The host side of an off-host backup: a transportable snapshot of C:, its document saved. A child
// process's expectations go unseen: its answer is whether every step went well.
int make_transportable_set(const std::filesystem::path& document_file) {
    auto backup = gathered_backup();
    BSTR document = nullptr;
    VSS_ID set_id{};
    if (backup->SetContext(VSS_VOLSNAP_ATTR_TRANSPORTABLE) != S_OK ||
        backup->StartSnapshotSet(&set_id) != S_OK ||
        add_volume(backup.get(), L"C:\\", hardware_provider_id) != S_OK ||
        backup->SetBackupState(true, true, VSS_BT_FULL, false) != S_OK ||
        run(backup.get(), &IVssBackupComponents::PrepareForBackup) != VSS_S_ASYNC_FINISHED ||
        run(backup.get(), &IVssBackupComponents::DoSnapshotSet) != VSS_S_ASYNC_FINISHED ||
        backup->SaveAsXML(&document) != S_OK)
        return 2;
    std::wofstream(document_file) << document;
    SysFreeString(document);
    return 0;
}

// What the simulator says, in its one line, of a host description that it cannot use, after the
// description's path.
std::string complaint(const scratch_host_t& host) {
    com_ptr_t<IVssBackupComponents> backup;
    testing::internal::CaptureStderr();
    EXPECT_EQ(CreateVssBackupComponentsInternal(backup.put()), E_UNEXPECTED);
    const std::string said = testing::internal::GetCapturedStderr();
    const std::string lead = "Simulated host is unusable: " + (host.dir() / "host.xml").string() + ": ";
    EXPECT_TRUE(said.starts_with(lead) && said.ends_with("\n")) << said;
    return said.substr(std::min(lead.size(), said.size()), said.size() - lead.size() - 1);
}

// A requester initialised for a backup from the document in file.
com_ptr_t<IVssBackupComponents> backup_from(const std::filesystem::path& file) {
    std::wifstream in(file);
    BSTR document = SysAllocString(std::wstring(std::istreambuf_iterator<wchar_t>(in), {}).c_str());
    auto backup = new_backup();
    EXPECT_EQ(backup->InitializeForBackup(document), S_OK);
    SysFreeString(document);
    return backup;
}

} // namespace

TEST(SharedState, ATransportableSetMadeOnTheHostIsImportedByAnotherProcessOnTheProxy) {
    scratch_host_t proxy(R"(<Host name="PROXY01">
  <Volume name="\\?\Volume{99990000-0000-0000-0000-000000000001}\" dir="volumes/c" mount="C:\"/>
  <Provider id="{7f1d0000-0000-0000-0000-00000000aaaa}" type="hardware" transportable="true" volumes="*"/>
</Host>
)");
    // The document names the host's folder by its bytes, a '%' and bytes that are no UTF-8 among them.
    scratch_host_t host(sample_host_xml(), "mirrack-h\xff\xfe%41st");
    const auto document_file = host.dir() / "backup-document.xml";
    ASSERT_TRUE(in_child_process([&] { return make_transportable_set(document_file); }));
    ASSERT_EQ(host.state_lines("shadows.txt").size(), 1u) << "the set outlives the release of its maker";

    proxy.select();
    auto backup = backup_from(document_file);
    ASSERT_EQ(backup->SetContext(VSS_CTX_ALL), S_OK);
    ASSERT_EQ(backup->EnableWriterClasses(&hyperv_writer_id, 1), S_OK);
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::ImportSnapshots), VSS_S_ASYNC_FINISHED);
    EXPECT_TRUE(writer_states(backup.get()).empty()) << "the proxy runs no Hyper-V writer";

    auto proxy_shadows = proxy.state_lines("shadows.txt");
    ASSERT_EQ(proxy_shadows.size(), 1u);
    EXPECT_TRUE(host.state_lines("shadows.txt").empty()) << "the copy moved to the proxy";
    EXPECT_NE(host.count("TransportShadowCopy"), 0u);

    const auto snapshot_id = proxy_shadows[0].substr(proxy_shadows[0].find('\t') + 1, 38);
    const GUID id = hostsim::parse_guid(hostsim::from_utf8(snapshot_id)).value();
    VSS_SNAPSHOT_PROP prop{};
    ASSERT_EQ(backup->GetSnapshotProperties(id, &prop), S_OK);
    EXPECT_STREQ(prop.m_pwszOriginalVolumeName, c_volume_name)
        << "the host's volume, for the path conversion";
    EXPECT_STREQ(prop.m_pwszOriginatingMachine, L"HV01");
    EXPECT_STREQ(prop.m_pwszServiceMachine, L"PROXY01");
    EXPECT_TRUE(prop.m_lSnapshotAttributes & VSS_VOLSNAP_ATTR_TRANSPORTABLE);
    VssFreeSnapshotPropertiesInternal(&prop);
    // What the imported copy holds, and its release, are read through the import's own tests.
    backup.reset();

    EXPECT_EQ(run(backup_from(document_file).get(), &IVssBackupComponents::ImportSnapshots),
              VSS_E_NO_SNAPSHOTS_IMPORTED)
        << "a set is imported once";
}

TEST(SharedState, ShadowCopiesOfAProcessThatDiedGoWhenTheHostIsOpenedNextAndTheirNumbersAreNotReused) {
    scratch_host_t host;
    ASSERT_TRUE(in_child_process([&] {
        auto backup = prepared_backup();
        if (run(backup.get(), &IVssBackupComponents::DoSnapshotSet) != VSS_S_ASYNC_FINISHED)
            return 2;
        backup.detach(); // never released: the process ends as if it had crashed
        return 0;
    }));
    auto shadows = host.state_lines("shadows.txt");
    ASSERT_EQ(shadows.size(), 1u);
    const std::string number = shadows[0].substr(0, shadows[0].find('\t'));
    ASSERT_TRUE(std::filesystem::exists(host.dir() / "state/shadows" / number));

    host.write("state/shadows/.removing-77/half-removed", "x");
    host.write("state/shadows/78/never-recorded", "x");

    // This process opens the host for the first time.
    EXPECT_TRUE(hostsim::host_selected());
    EXPECT_TRUE(std::filesystem::is_empty(host.dir() / "state/shadows"))
        << "the dead one's copy, one half removed and one that no record owns all go";
    EXPECT_TRUE(host.state_lines("shadows.txt").empty());
    EXPECT_EQ(host.count("RemoveAbandonedShadowCopy", number), 1u);

    // Numbers grow across processes, and the dead one's is not given again.
    auto backup = prepared_backup();
    ASSERT_EQ(run(backup.get(), &IVssBackupComponents::DoSnapshotSet), VSS_S_ASYNC_FINISHED);
    shadows = host.state_lines("shadows.txt");
    ASSERT_EQ(shadows.size(), 1u);
    EXPECT_EQ(shadows[0].substr(0, 2), "2\t");
}

// The limit of nesting is far above any real description; the refusal comes before anything walks the tree.
TEST(SharedState, AMalformedHostDescriptionMakesEverySimulatedCallFail) {
    {
        scratch_host_t host("<Host name=\"HV01\"><Volume name=\"x\" dir=\"v\" mount=\"C:\\\"></Host>");
        EXPECT_EQ(complaint(host), "Start-end tags mismatch at offset 57");
        EXPECT_TRUE(hostsim::host_selected());
        EXPECT_EQ(ClusterIsPathOnSharedVolume(L"C:\\ClusterStorage\\Volume1\\"), FALSE);
        EXPECT_EQ(hostsim::win32_call("FindNextFileW", L"C:\\"), static_cast<std::uint32_t>(E_UNEXPECTED));
        EXPECT_EQ(hostsim::win32_call("CreateFileW", L"/tmp/x.log"), std::nullopt)
            << "a native path needs no host";
        EXPECT_EQ(hostsim::map_path(L"C:\\"), std::nullopt);
    }
    auto nested = [](std::size_t levels) {
        std::string xml = "<Host name=\"HV01\">";
        for (std::size_t i = 1; i < levels; ++i)
            xml += "<x>";
        for (std::size_t i = 1; i < levels; ++i)
            xml += "</x>";
        return xml + "</Host>";
    };
    {
        scratch_host_t host(nested(256));
        com_ptr_t<IVssBackupComponents> backup;
        EXPECT_EQ(CreateVssBackupComponentsInternal(backup.put()), S_OK);
    }
    scratch_host_t host(nested(100000));
    EXPECT_EQ(complaint(host), "the document is nested deeper than 256 levels");
    // Wrong content is malformed too.
    scratch_host_t wrong(sample_host_xml(R"(<Provider id="not a guid" type="system"/>)"));
    EXPECT_EQ(complaint(wrong), "<Provider> at offset 1708: attribute 'id' is not a GUID");
}
