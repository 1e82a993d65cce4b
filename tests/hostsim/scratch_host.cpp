#include "scratch_host.h"

#include "hostsim/host_access.h"
#include "hostsim/state_store.h"

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

namespace hostsim_test {

namespace fs = std::filesystem;

const GUID hyperv_writer_id = {0x66841cd4, 0x6ded, 0x4f4b, {0x8f, 0x17, 0xfd, 0x23, 0xf8, 0xdd, 0xc3, 0xde}};
const GUID hyperv_writer_instance = {0x0e2b0000, 0, 0, {0, 0, 0, 0, 0, 0, 0, 1}};
const GUID system_provider_id = {
    0xb5946137, 0x7b9f, 0x4925, {0xaf, 0x80, 0x51, 0xab, 0xd6, 0x0b, 0x20, 0xd5}};
const GUID hardware_provider_id = {0x7f1d0000, 0, 0, {0, 0, 0, 0, 0, 0, 0xaa, 0xaa}};
const wchar_t c_volume_name[] = L"\\\\?\\Volume{6a1b0c3e-0000-0000-0000-000000000001}\\";
const wchar_t vm1_component[] = L"B1F6C5A2-2D3E-4F50-8A61-7C8D9E0F1A2B";

std::string sample_host_xml(const std::string& extra) {
    return R"(<Host name="HV01">
  <Environment><Var name="VmRoot" value="C:\VMs"/></Environment>
  <Registry>
    <Key path="SOFTWARE\Orlix\Orlix Keepsafe">
      <Value name="LogDirectory" type="REG_SZ" data="C:\Logs\"/>
      <Value name="Level" type="REG_DWORD" data="0x10"/>
    </Key>
  </Registry>
  <Volume name="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000001}\" dir="volumes/c" mount="C:\;D:\Mounted\"/>
  <Volume name="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000002}\" dir="volumes/csv1"
          mount="C:\ClusterStorage\Volume1\" csv="true"/>
  <Share unc="\\fs01\vms\" root="\\fs01\vms\" dir="shares/fs01-vms"/>
  <Provider id="{b5946137-7b9f-4925-af80-51abd60b20d5}" type="system"/>
  <Provider id="{89300202-3cec-4981-9171-19f59559e0f2}" type="fileshare"/>
  <Provider id="{400a2ff4-5eb1-44b0-8a05-1fcac0bcf9ff}" type="csv"/>
  <Provider id="{7f1d0000-0000-0000-0000-00000000aaaa}" type="hardware" transportable="true"
            volumes="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000001}\"/>
  <Writer id="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" instance="{0e2b0000-0000-0000-0000-000000000001}"
          name="Microsoft Hyper-V VSS Writer">
    <Component name="B1F6C5A2-2D3E-4F50-8A61-7C8D9E0F1A2B" caption="vm1" type="2" logicalPath="">
      <File path="C:\VMs\vm1\" spec="vm1.vhdx"/>
      <File path="%VmRoot%\vm1\" spec="*.avhdx" recursive="false"/>
    </Component>
    <Component name="C7D8E9F0-1A2B-4C3D-8E4F-5A6B7C8D9E0F" caption="vm2" type="2">
      <File path="C:\ClusterStorage\Volume1\vm2\" spec="*" recursive="true"/>
    </Component>
  </Writer>
  <Writer id="{e8132975-6f93-4464-a53e-1050253ae220}" instance="{0e2b0000-0000-0000-0000-000000000002}"
          name="System Writer"/>
)" + extra +
           "</Host>\n";
}

scratch_host_t::scratch_host_t(const std::string& host_xml, const std::string& prefix)
    : journaled_host_t(prefix) {
    write("host.xml", host_xml);
    write("volumes/c/VMs/vm1/vm1.vhdx", "disk of vm1, before");
    write("volumes/c/VMs/vm1/vm1_A1.avhdx", "checkpoint of vm1");
    write("volumes/csv1/vm2/Disks/vm2.vhdx", "disk of vm2");
    write("shares/fs01-vms/vm3/vm3.vhdx", "disk of vm3");
}

std::vector<std::vector<std::string>> scratch_host_t::journal() const {
    std::vector<std::vector<std::string>> records;
    for (auto& line : state_lines("journal.txt")) {
        std::vector<std::string> fields;
        std::istringstream in(line);
        for (std::string field; std::getline(in, field, '\t');)
            fields.push_back(field);
        records.push_back(fields);
    }
    return records;
}

fs::path local_path(const std::wstring& windows_path) {
    auto path = hostsim::map_path(windows_path);
    EXPECT_TRUE(path.has_value());
    return path.value_or(fs::path());
}

HRESULT wait_for(compat::com_ptr_t<IVssAsync> async) {
    for (;;) {
        HRESULT status = E_FAIL;
        HRESULT hr = async->QueryStatus(&status, nullptr);
        if (hr != S_OK)
            return hr;
        if (status != VSS_S_ASYNC_PENDING)
            return status;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

HRESULT run(IVssBackupComponents* backup, HRESULT (IVssBackupComponents::*op)(IVssAsync**)) {
    compat::com_ptr_t<IVssAsync> async;
    HRESULT hr = (backup->*op)(async.put());
    return hr == S_OK ? wait_for(async) : hr;
}

compat::com_ptr_t<IVssBackupComponents> new_backup() {
    compat::com_ptr_t<IVssBackupComponents> backup;
    EXPECT_EQ(CreateVssBackupComponentsInternal(backup.put()), S_OK);
    return backup;
}

compat::com_ptr_t<IVssBackupComponents> initialised_backup() {
    auto backup = new_backup();
    EXPECT_EQ(backup->InitializeForBackup(), S_OK);
    return backup;
}

compat::com_ptr_t<IVssBackupComponents> gathered_backup() {
    auto backup = initialised_backup();
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::GatherWriterMetadata), VSS_S_ASYNC_FINISHED);
    return backup;
}

compat::com_ptr_t<IVssBackupComponents> prepared_backup(VSS_ID* snapshot_id) {
    auto backup = gathered_backup();
    start_set(backup.get());
    EXPECT_EQ(add_component(backup.get()), S_OK);
    EXPECT_EQ(add_volume(backup.get(), c_volume_name, system_provider_id, snapshot_id), S_OK);
    EXPECT_EQ(backup->SetBackupState(true, true, VSS_BT_FULL, false), S_OK);
    EXPECT_EQ(run(backup.get(), &IVssBackupComponents::PrepareForBackup), VSS_S_ASYNC_FINISHED);
    return backup;
}

std::vector<VSS_WRITER_STATE> writer_states(IVssBackupComponents* backup, std::vector<HRESULT>* failures) {
    EXPECT_EQ(run(backup, &IVssBackupComponents::GatherWriterStatus), VSS_S_ASYNC_FINISHED);
    UINT count = 0;
    EXPECT_EQ(backup->GetWriterStatusCount(&count), S_OK);
    std::vector<VSS_WRITER_STATE> states;
    for (UINT i = 0; i < count; ++i) {
        VSS_ID instance{}, writer{};
        BSTR name = nullptr;
        VSS_WRITER_STATE state{};
        HRESULT failure = S_OK;
        EXPECT_EQ(backup->GetWriterStatus(i, &instance, &writer, &name, &state, &failure), S_OK);
        SysFreeString(name);
        states.push_back(state);
        if (failures)
            failures->push_back(failure);
    }
    return states;
}

HRESULT add_volume(IVssBackupComponents* backup, std::wstring volume, const GUID& provider,
                   VSS_ID* snapshot_id) {
    VSS_ID id{};
    return backup->AddToSnapshotSet(volume.data(), provider, snapshot_id ? snapshot_id : &id);
}

HRESULT add_component(IVssBackupComponents* backup, const wchar_t* component) {
    return backup->AddComponent(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"", component);
}

HRESULT set_outcome(IVssBackupComponents* backup, const wchar_t* component, bool succeeded) {
    return backup->SetBackupSucceeded(hyperv_writer_instance, hyperv_writer_id, VSS_CT_FILEGROUP, L"",
                                      component, succeeded);
}

GUID start_set(IVssBackupComponents* backup) {
    VSS_ID set_id{};
    EXPECT_EQ(backup->StartSnapshotSet(&set_id), S_OK);
    return set_id;
}

std::string this_process_text() {
    const auto self = hostsim::this_process();
    return std::to_string(self.pid) + ":" + std::to_string(self.start);
}

int dead_pid() {
    const pid_t pid = fork();
    if (pid == 0)
        _exit(0);
    waitpid(pid, nullptr, 0);
    return static_cast<int>(pid);
}

} // namespace hostsim_test
