// A simulated Hyper-V host made for one test, shared by the snapshot task's unit
// tests and the tool's end-to-end tests: VMs on C:, on a cluster shared volume and
// on an SMB share, and one VM nobody asks for. The host is selected through
// MIRRACK_HOST for as long as the object lives.
#pragma once

#include "hostsim/host_access.h"
#include "tests/hostsim/journaled_host.h"
#include "tests/support/text_file.h"

#include <string>
#include <vector>

namespace snapshot_test {

inline const char local_vm[] = "A1000000-0000-4000-8000-000000000001";
inline const char csv_vm[] = "A1000000-0000-4000-8000-000000000002";
inline const char smb_vm[] = "A1000000-0000-4000-8000-000000000003";
inline const char idle_vm[] = "A1000000-0000-4000-8000-000000000004";
inline const char c_volume[] = R"(\\?\Volume{6a1b0c3e-0000-0000-0000-000000000001}\)";
inline const char csv_volume[] = R"(\\?\Volume{6a1b0c3e-0000-0000-0000-000000000002}\)";

// systemProvider: more attributes of the system provider, such as refuse="2".
inline std::string hyperv_host_xml(const std::string& extra = "", const std::string& systemProvider = "") {
    return std::string(R"(<Host name="HV01">
  <Environment><Var name="VmRoot" value="C:\VMs"/></Environment>
  <Volume name="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000001}\" dir="volumes/c" mount="C:\"/>
  <Volume name="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000002}\" dir="volumes/csv1"
          mount="C:\ClusterStorage\Volume1\" csv="true"/>
  <Share unc="\\fs01\vms\" root="\\fs01\vms\" dir="shares/fs01-vms"/>
  <Provider id="{b5946137-7b9f-4925-af80-51abd60b20d5}" type="system" )") +
           systemProvider + R"(/>
  <Provider id="{89300202-3cec-4981-9171-19f59559e0f2}" type="fileshare"/>
  <Provider id="{400a2ff4-5eb1-44b0-8a05-1fcac0bcf9ff}" type="csv"/>
  <Provider id="{7f1d0000-0000-0000-0000-00000000aaaa}" type="hardware" transportable="true"
            volumes="\\?\Volume{6a1b0c3e-0000-0000-0000-000000000001}\"/>
  <Writer id="{66841cd4-6ded-4f4b-8f17-fd23f8ddc3de}" instance="{0e2b0000-0000-0000-0000-000000000001}"
          name="Microsoft Hyper-V VSS Writer">
    <Component name="A1000000-0000-4000-8000-000000000001" type="1" logicalPath="">
      <File path="C:\VMs\local\" spec="local.vhdx"/>
      <File path="C:\VMs\local\" spec="gone.vhdx"/>
      <File path="%VmRoot%\local\" spec="local_?.avhdx"/>
      <File path="%VmRoot%\local\" spec="Snap*" recursive="true"/>
      <File path="C:\VMs\nowhere\" spec="*.vhdx" recursive="true"/>
    </Component>
    <Component name="A1000000-0000-4000-8000-000000000002" type="1" logicalPath="Cluster">
      <File path="C:\ClusterStorage\Volume1\csv\" spec="*" recursive="true"/>
    </Component>
    <Component name="A1000000-0000-4000-8000-000000000003" type="1">
      <File path="\\fs01\vms\smb\" spec="smb.vhdx"/>
    </Component>
    <Component name="A1000000-0000-4000-8000-000000000004" type="1">
      <File path="C:\VMs\idle\" spec="idle.vhdx"/>
    </Component>
  </Writer>
  <Writer id="{e8132975-6f93-4464-a53e-1050253ae220}" instance="{0e2b0000-0000-0000-0000-000000000002}"
          name="System Writer"/>
)" + extra +
           "</Host>\n";
}

// One VM of a backup specification.
struct spec_vm_t {
    spec_vm_t(std::string vmId, bool crash = false, std::vector<std::string> aux = {})
        : id(std::move(vmId)), crashConsistent(crash), auxFiles(std::move(aux)) {}
    std::string id;
    bool crashConsistent = false;
    std::vector<std::string> auxFiles;
};

// A specification of the VMs; tail goes inside HVBackupSpec (providers, Offhost, Settings).
inline std::string spec_xml(const std::vector<spec_vm_t>& vms, const std::string& tail = "") {
    std::string text = "<HVBackupSpec><VMs>";
    for (const auto& vm : vms) {
        text += "<VM id=\"" + vm.id + "\" crashConsistent=\"" + (vm.crashConsistent ? "1" : "0") + "\">";
        for (const auto& aux : vm.auxFiles)
            text += "<aux_file path=\"" + aux + "\"/>";
        text += "</VM>";
    }
    return text + "</VMs>" + tail + "</HVBackupSpec>";
}

// The providers a host needs: system by default, CSV and file share by mount point.
inline const char usual_providers[] = R"(<VSSProvider type="1" id="{00000000-0000-0000-0000-000000000000}"/>
<volumes><volProvider type="5" id="{00000000-0000-0000-0000-000000000000}" volMountPoint="C:\ClusterStorage\Volume1"/>
<volProvider type="4" id="{00000000-0000-0000-0000-000000000000}" volMountPoint="\\fs01\vms\"/></volumes>
<Settings UseCsvVssWriter="true"/>)";

// A file's content through the selected host's mapping of Windows paths; empty when the path
// leads nowhere.
inline std::string read_through(const std::wstring& windowsPath) {
    const auto file = hostsim::map_path(windowsPath);
    return file ? test_support::read_file(*file) : std::string();
}

class hyperv_host_t : public hostsim_test::journaled_host_t {
public:
    explicit hyperv_host_t(const std::string& extra = "", const std::string& systemProvider = "")
        : journaled_host_t("mirrack-snapshot") {
        write("host.xml", hyperv_host_xml(extra, systemProvider));
        write("volumes/c/VMs/local/local.vhdx", "local disk, before");
        write("volumes/c/VMs/local/local_1.avhdx", "local checkpoint");
        write("volumes/c/VMs/local/Disks/inner.avhdx", "not searched: Disks doesn't match the mask");
        write("volumes/c/VMs/local/Snapfile.bin", "top");
        write("volumes/c/VMs/local/Snapshots/Snap-a.vmrs", "a");
        write("volumes/c/VMs/local/Snapshots/other.txt", "not matched");
        write("volumes/c/VMs/local/Snapshots/Snapdeep/Snap-b.vmrs", "b");
        write("volumes/c/VMs/local/Snapshots/Deep/Snap-c.vmrs", "not searched: Deep doesn't match");
        write("volumes/c/VMs/local/notes.txt", "notes");
        write("volumes/c/VMs/idle/idle.vhdx", "idle");
        write("volumes/csv1/csv/csv.vhdx", "csv disk, before");
        write("volumes/csv1/csv/Disks/data.vhdx", "csv data");
        write("shares/fs01-vms/smb/smb.vhdx", "smb disk, before");
    }

    // No shadow copy lives and no file of a cluster shared volume is prepared for backup.
    bool is_clean() const { return state_lines("shadows.txt").empty() && state_lines("csv.txt").empty(); }
};

} // namespace snapshot_test
