// mirrack-client backup against a snapshot server of the test: its command line, the
// VMs it takes from the specification, and the road from begin to close.
#include "client/backup_arguments.h"
#include "client/response.h"
#include "client/spec_file_vms.h"
#include "client/subcommand.h"
#include "common/exc/convert.h"
#include "documents/files_list.h"
#include "test_server.h"
#include "tests/support/failure_lines.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <mutex>

namespace {

namespace fs = std::filesystem;
using client_test::contains;

const char vm_a[] = "83F4C5F7-1401-4A04-A996-506A4DEA6810";
const char vm_b[] = "26882b39-53fb-470f-8ebe-5938c39fcd0f";

std::string spec_with(const std::vector<std::string>& ids) {
    std::string document = "<?xml version=\"1.0\"?>\n<HVBackupSpec><VMs>";
    for (const std::string& id : ids)
        document += "<VM id=\"" + id + "\" crashConsistent=\"0\"/>";
    return document + "</VMs><Offhost type=\"0\"/></HVBackupSpec>";
}

// A snapshot task as the tool runs it, answering from files of the test: complete at
// the second poll, each VM's items listed from a map, every report and close recorded.
class snapshot_server_t : public wrap::IInvokeDispatcher {
public:
    void Invoke(const std::wstring& command, InputArguments_t& input, OutputArguments_t& output) override {
        std::lock_guard<std::mutex> lock(mutex);
        calls.push_back(command);
        if (command == L"BeginSnapshotCreation") {
            job = input.ReadText("JobName") + L"|" + input.ReadText("BackupConsole");
            spec = input.ReadEncoded("SnapshotXmlSpec");
            output.WriteGuid("SnapshotId", snapshot_id);
        } else if (command == L"GetAsyncOpStatus") {
            const bool completed = ++polls >= 2;
            output.WriteGuid("SnapshotId", snapshot_id);
            output.WriteText("ErrDescription", completed ? failure : L"");
            output.WriteBool("IsCompleted", completed);
            output.WriteBool("IsSucceeded", !completed || failure.empty());
            output.WriteNumber("CreationTime", 1);
            output.WriteNumber("CompletedTime", completed ? 2 : 0);
        } else if (command == L"GetSnapshotInfo") {
            output.WriteEncoded("BackupDoc", L"<Backup/>");
            output.WriteEncoded("WriterDoc", L"<Writers/>");
            output.WriteText("SnapshotsXML", L"");
        } else if (command == L"GetVMFilesList") {
            const std::wstring id = guid_to_wstring(input.ReadGuid("VmId"));
            if (!items.count(id))
                throw exc::runtime_exc_t("Cannot find VM with ID: [%1]", to_ansi_nothrow(id));
            output.WriteEncoded("FilesList", SerializeItemsList(items[id]));
        } else if (command == L"SetVmBackupStatus") {
            reports[guid_to_wstring(input.ReadGuid("VmId"))] = input.ReadBool("BackupStatus");
        } else if (command != L"CloseSnapshot") {
            throw exc::runtime_exc_t("Command [%1] not found", to_ansi_nothrow(command));
        }
    }

    const GUID snapshot_id = string_to_guid(std::wstring(L"{0d0d0d0d-1111-2222-3333-444444444444}"));
    std::wstring failure;
    std::map<std::wstring, ItemsList> items;
    std::mutex mutex;
    std::vector<std::wstring> calls;
    std::wstring job, spec;
    int polls = 0;
    std::map<std::wstring, bool> reports;
};

std::wstring braced(const char* id) {
    return guid_to_wstring(string_to_guid(std::string(id)));
}

struct road_t : client_test::run_t {
    fs::path folder = client_test::scratch_folder() / ("road-" + std::to_string(++count()));
    std::shared_ptr<snapshot_server_t> dispatcher = std::make_shared<snapshot_server_t>();
    client_test::test_server_t server{dispatcher};

    static int& count() {
        static int value = 0;
        return value;
    }

    road_t() {
        fs::create_directories(folder / "shadow" / "a" / "Virtual Hard Disks");
        std::ofstream(folder / "shadow" / "a" / "Virtual Hard Disks" / "a.vhdx", std::ios::binary)
            << std::string(5000, 'a');
        std::ofstream(folder / "shadow" / "a" / "a.vmcx", std::ios::binary) << "config";
        dispatcher->items[braced(vm_a)] = {
            {L"C:\\VMs\\a\\", L"*", 1, L"Virtual Hard Disks\\a.vhdx",
             (folder / "shadow" / "a" / "Virtual Hard Disks" / "a.vhdx").wstring()},
            {L"C:\\VMs\\a\\", L"a.vmcx", 0, L"a.vmcx", (folder / "shadow" / "a" / "a.vmcx").wstring()}};
        dispatcher->items[braced(vm_b)] = {};
        std::ofstream(folder / "spec.xml", std::ios::binary) << spec_with({vm_a, vm_b});
    }

    void run(std::vector<std::string> extra = {}) {
        std::vector<std::string> line{
            "--pipe", to_ansi_nothrow(server.name()), "backup", "--spec", (folder / "spec.xml").string(),
            "--to",   (folder / "backup").string()};
        line.insert(line.end(), extra.begin(), extra.end());
        static_cast<client_test::run_t&>(*this) = client_test::run_client(line);
        // A usage error never connects, and the server would wait its whole time for a client.
        if (status != client::exit_usage)
            server.finish();
    }
};

} // namespace

TEST(BackupCommandLine, FailedVmsAreGuidsInAnyFormTheRestIsRequiredAndTheSpecsVmsComeInOrderFromXml) {
    const client::backup_arguments_t parsed = client::ParseBackupArguments(
        {"--spec", "s.xml", "--to=out", "--fail-vm", "{26882B39-53FB-470F-8EBE-5938C39FCD0F}",
         "--fail-vm=" + std::string(vm_a)});
    EXPECT_EQ(parsed.specFile, "s.xml");
    EXPECT_EQ(parsed.targetDir, "out");
    EXPECT_EQ(parsed.failVms,
              (std::vector<GUID>{string_to_guid(std::string(vm_b)), string_to_guid(std::string(vm_a))}));

    for (const std::vector<std::string>& line :
         std::vector<std::vector<std::string>>{{"--spec", "s.xml"},
                                               {"--to", "out"},
                                               {"--spec", "s.xml", "--to", "out", "--fail-vm"},
                                               {"--spec", "s.xml", "--to", "out", "--fail-vm", "vm1"},
                                               {"--spec", "s.xml", "--to", "out", "--spec="},
                                               {"--spec", "s.xml", "--to", "out", "extra"}})
        EXPECT_THROW(client::ParseBackupArguments(line), client::usage_error_t);

    const auto vms = client::SpecVms(spec_with({vm_b, vm_a}));
    ASSERT_EQ(vms.size(), 2u);
    EXPECT_EQ(vms[0].id, L"26882b39-53fb-470f-8ebe-5938c39fcd0f");
    EXPECT_EQ(vms[1].guid, string_to_guid(std::string(vm_a)));
    EXPECT_TRUE(client::SpecVms(spec_with({})).empty());
    EXPECT_THROW(client::SpecVms(spec_with({"vm1"})), exc::runtime_exc_t);
    EXPECT_THROW(client::SpecVms("<HVBackupSpec/>"), exc::runtime_exc_t);
    // Both readers wrap the parser's failure in their own words.
    EXPECT_EQ(failure_lines([] { client::SpecVms("<HVBackupSpec>"); }).back(),
              "The backup specification is not XML.");
    EXPECT_EQ(failure_lines([] { client::CResponse::FromFrame(L"xml:<OutputArguments>"); }).back(),
              "The response document can't be read.");
}

TEST(BackupRoad, AHealthyBackupCopiesReportsEachVmAndClosesAfterMistakesFoundBeforeConnecting) {
    road_t road;
    road.run({"--fail-vm", "{00000000-0000-0000-0000-000000000001}"});
    EXPECT_EQ(road.status, client::exit_usage);
    EXPECT_TRUE(contains(road.err, "names no VM of the backup specification")) << road.err;
    road.run({"--job", "nightly", "--console", "srv01", "--fail-vm", vm_b});
    EXPECT_EQ(road.status, client::exit_success) << road.out << road.err;

    const auto& d = *road.dispatcher;
    EXPECT_EQ(d.job, L"nightly|srv01");
    EXPECT_EQ(d.spec, to_unicode(spec_with({vm_a, vm_b})));
    EXPECT_EQ(d.calls,
              (std::vector<std::wstring>{L"BeginSnapshotCreation", L"GetAsyncOpStatus", L"GetAsyncOpStatus",
                                         L"GetSnapshotInfo", L"GetVMFilesList", L"GetVMFilesList",
                                         L"SetVmBackupStatus", L"SetVmBackupStatus", L"CloseSnapshot"}));
    EXPECT_EQ(d.reports, (std::map<std::wstring, bool>{{braced(vm_a), true}, {braced(vm_b), false}}));
    EXPECT_EQ(fs::file_size(road.folder / "backup" / vm_a / "Virtual Hard Disks" / "a.vhdx"), 5000u);
    EXPECT_TRUE(fs::exists(road.folder / "backup" / vm_a / "a.vmcx"));

    EXPECT_TRUE(contains(road.out, "Snapshot task completed after 2 polls")) << road.out;
    EXPECT_TRUE(contains(road.out, std::string(vm_a) + "      2  4.9 KiB  reported OK\n" + vm_b +
                                       "      0      0 B  reported failed (--fail-vm)\n"))
        << road.out;
}

// A VM whose files cannot be read or listed is reported failed; a failed task ends the road with
// its description. Either way the snapshot is closed.
TEST(BackupRoad, AVmWhoseFilesCannotBeReadOrListedIsReportedFailedAndAFailedTaskEndsTheRoad) {
    road_t items, task;
    items.dispatcher->items[braced(vm_a)].push_back(
        {L"C:\\VMs\\a\\", L"gone.vhdx", 0, L"gone.vhdx", (items.folder / "shadow" / "gone.vhdx").wstring()});
    items.dispatcher->items.erase(braced(vm_b));
    task.dispatcher->failure = L"Failed to create snapshot.\nWriter is in a failed state.";
    for (road_t* road : {&items, &task}) {
        road->run();
        EXPECT_EQ(road->status, client::exit_error_response);
        EXPECT_EQ(road->dispatcher->calls.back(), L"CloseSnapshot");
    }
    EXPECT_EQ(items.dispatcher->reports,
              (std::map<std::wstring, bool>{{braced(vm_a), false}, {braced(vm_b), false}}));
    EXPECT_TRUE(contains(items.out, "reported failed (copy incomplete)")) << items.out;
    EXPECT_TRUE(contains(items.out, std::string(vm_a) + ": The file [")) << items.out;
    EXPECT_TRUE(contains(items.out, "Cannot find VM with ID")) << items.out;

    EXPECT_TRUE(task.dispatcher->reports.empty());
    EXPECT_TRUE(contains(
        task.out, "The snapshot task failed:\n    Failed to create snapshot.\n    Writer is in a failed "
                  "state."))
        << task.out;
    EXPECT_FALSE(fs::exists(task.folder / "backup"));
}
