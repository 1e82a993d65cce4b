// Without the platform's message module, the texts are our own table of the codes that VSS
// documents, worded as the module gives them (closing line break included). The simulated host
// can fail the load or the lookup like any other Win32 call.
#include "vssutils/vss_message_module.h"

#include "hostsim/host_access.h"

#include <algorithm>
#include <iterator>

namespace VSSUtils::detail {

namespace {

// ERROR_MR_MID_NOT_FOUND: the module has no text for that message id.
const DWORD message_id_not_found = 317;

struct vss_message_t {
    DWORD id;
    const char* text;
};

// Sorted by id for the binary search below.
constexpr vss_message_t vss_messages[] = {
    {0x00042309, "The asynchronous operation is pending.\r\n"},
    {0x0004230A, "The asynchronous operation has completed.\r\n"},
    {0x0004230B, "The asynchronous operation has been cancelled.\r\n"},
    {0x00042321, "Some shadow copies were not succesfully imported.\r\n"},
    {0x80042301, "A function call was made when the object was in an incorrect state for that function.\r\n"},
    {0x80042302,
     "A Volume Shadow Copy Service component encountered an unexpected error. Check the Application "
     "event log for more information.\r\n"},
    {0x80042303, "The volume shadow copy provider has already been registered.\r\n"},
    {0x80042304, "The volume shadow copy provider is not registered in the system.\r\n"},
    {0x80042306,
     "The shadow copy provider had an error. Check the System and Application event logs for more "
     "information.\r\n"},
    {0x80042307, "The shadow copy provider is currently in use and cannot be unregistered.\r\n"},
    {0x80042308, "The specified object was not found.\r\n"},
    {0x8004230C, "Shadow copying the specified volume is not supported.\r\n"},
    {0x8004230D, "The object already exists.\r\n"},
    {0x8004230E, "The given shadow copy provider does not support shadow copying the specified volume.\r\n"},
    {0x8004230F, "The shadow copy provider had an unexpected error while trying to process the specified "
                 "operation.\r\n"},
    {0x80042310,
     "The given XML document is not valid.  It is either incorrectly-formed XML or it does not match "
     "the schema.\r\n"},
    {0x80042311,
     "The given XML document is not valid.  It is either incorrectly-formed XML or it does not match "
     "the schema.\r\n"},
    {0x80042312, "The maximum number of volumes for this operation has been reached.\r\n"},
    {0x80042313,
     "The shadow copy provider timed out while flushing data to the volume being shadow copied. This "
     "is probably due to excessive activity on the volume. Try again later when the volume is not "
     "being used so heavily.\r\n"},
    {0x80042314, "The shadow copy provider timed out while holding writes to the volume being shadow copied. "
                 "This is probably due to excessive activity on the volume by an application or a system "
                 "service. Try again later when activity on the volume is reduced.\r\n"},
    {0x80042315, "VSS encountered problems while sending events to writers.\r\n"},
    {0x80042316,
     "Another shadow copy creation is already in progress. Wait a few moments and try again.\r\n"},
    {0x80042317, "The specified volume has already reached its maximum number of shadow copies.\r\n"},
    {0x80042318,
     "An error was detected in the Volume Shadow Copy Service (VSS). The problem occurred while "
     "trying to contact VSS writers. Verify that the Event System service and the VSS service are "
     "running and check for associated errors in the event logs.\r\n"},
    {0x80042319,
     "A writer did not respond to a GatherWriterStatus call.  The writer may either have terminated "
     "or it may be stuck.  Check the system and application event logs for more information.\r\n"},
    {0x8004231A,
     "The writer has already sucessfully called the Subscribe function.  It cannot call subscribe "
     "multiple times.\r\n"},
    {0x8004231B, "The shadow copy provider does not support the specified shadow copy type.\r\n"},
    {0x8004231D, "The specified shadow copy storage association is in use and so can't be deleted.\r\n"},
    {0x8004231E, "Maximum number of shadow copy storage associations already reached.\r\n"},
    {0x8004231F,
     "Insufficient storage available to create either the shadow copy storage file or other shadow "
     "copy data.\r\n"},
    {0x80042320, "No shadow copies were successfully imported.\r\n"},
    {0x80042321, "Some shadow copies were not succesfully imported.\r\n"},
    {0x80042322, "The maximum number of remote machines for this operation has been reached.\r\n"},
    {0x80042323, "The remote server is unavailable.\r\n"},
    {0x80042324, "The remote server is running a version of the Volume Shadow Copy Service that does not "
                 "support remote shadow-copy creation.\r\n"},
    {0x80042325, "A revert is currently in progress for the specified volume.  Another revert cannot be "
                 "initiated until the current revert completes.\r\n"},
    {0x80042326, "The volume being reverted was lost during revert.\r\n"},
    {0x80042327, "A reboot is required after completing this operation.\r\n"},
    {0x80042328, "A timeout occurred while freezing a transaction manager.\r\n"},
    {0x80042329, "Too much time elapsed between freezing a transaction manager and thawing the transaction "
                 "manager.\r\n"},
    {0x8004232A, "The requested operation would overwrite a volume that is not explicitly selected. For more "
                 "information, check the Application event log.\r\n"},
    {0x8004232B, "The shadow copy ID was not found in the backup components document for the shadow copy "
                 "set.\r\n"},
    {0x8004232C, "The specified volume is nested too deeply to participate in the VSS operation.\r\n"},
    {0x8004232D, "The requested operation is not supported on the specified volume because it is not a local "
                 "volume.\r\n"},
    {0x8004232E, "A timeout occurred while preparing a cluster shared volume for backup.\r\n"},
    {0x8004232F, "The requested operation is not supported.\r\n"},
    {0x80042336, "The writer experienced a partial failure. Check the component level error state for more "
                 "information.\r\n"},
    {0x800423F0,
     "The shadow copy set only contains only a subset of the volumes needed to correctly backup the "
     "selected components of the writer.\r\n"},
    {0x800423F1, "A resource allocation failed while processing this operation.\r\n"},
    {0x800423F2, "The writer's timeout expired between the Freeze and Thaw events.\r\n"},
    {0x800423F3, "The writer experienced a transient error.  If the backup process is retried, the error may "
                 "not reoccur.\r\n"},
    {0x800423F4,
     "The writer experienced a non-transient error.  If the backup process is retried, the error is "
     "likely to reoccur.\r\n"},
    {0x800423F5, "The writer experienced an error while trying to recover the shadow-copy volume.\r\n"},
    {0x800423F6,
     "The shadow copy set break operation failed because the disk/partition identities could not "
     "be reverted. The target identity already exists on the machine or cluster and must be masked "
     "before this operation can succeed.\r\n"},
    {0x800423F7, "This version of the hardware provider does not support this operation.\r\n"},
    {0x800423F8, "An expected disk did not arrive in the system.\r\n"},
    {0x800423F9,
     "An expected hidden volume did not arrive in the system. Check the Application event log for "
     "more information.\r\n"},
    {0x800423FA, "An expected volume did not arrive in the system. Check the Application event log for more "
                 "information.\r\n"},
    {0x800423FB, "The autorecovery operation failed to complete on the shadow copy.\r\n"},
    {0x800423FC, "An error occurred in processing the dynamic disks involved in the operation.\r\n"},
    {0x800423FD,
     "The given Backup Components Document is for a non-transportable shadow copy. This operation "
     "requires a transportable shadow copy.\r\n"},
    {0x800423FE, "The MBR signature or GPT ID for one or more disks could not be set to the intended value. "
                 "Check the Application event log for more information.\r\n"},
    {0x800423FF, "The LUN resynchronization operation could not be started because another resynchronization "
                 "operation is already in progress.\r\n"},
    {0x80042400,
     "The clustered disks could not be enumerated or could not be put into cluster maintenance mode. "
     "Check the System event log for cluster related events and the Application event log for VSS "
     "related events.\r\n"},
    {0x80042401, "There are too few disks on this computer or one or more of the disks is too small. Add or "
                 "change disks so they match the disks in the backup, and try the restore again.\r\n"},
    {0x80042402,
     "Windows cannot create a disk on this computer needed to restore from the backup. Make sure the "
     "disks are properly connected, or add or change disks, and try the restore again.\r\n"},
    {0x80042403,
     "The computer needs to be restarted to finish preparing a hard disk for restore. To continue, "
     "restart your computer and run the restore again.\r\n"},
    {0x80042404, "The backup failed due to a missing disk for a dynamic volume. Make sure the disk is online "
                 "and retry the backup.\r\n"},
    {0x80042405, "Automated System Recovery failed the shadow copy, because a selected critical volume is "
                 "located on a cluster shared disk. This is an unsupported configuration.\r\n"},
    {0x80042406, "A data disk is currently set as active in BIOS. Set some other disk as active or use the "
                 "DiskPart utility to clean the data disk, and then retry the restore operation.\r\n"},
    {0x80042407, "The disk that is set as active in BIOS is too small to recover the original system disk. "
                 "Replace the disk with a larger one and retry the restore operation.\r\n"},
    {0x80042408, "There is not enough disk space on the system to perform the restore operation. Add another "
                 "disk or replace one of the existing disks and retry the restore operation.\r\n"},
    {0x80042409,
     "Writer status is not available for one or more writers. A writer may have reached the maximum "
     "number of available backup and restore sessions.\r\n"},
    {0x8004240A, "A critical dynamic disk is a Virtual Hard Disk (VHD). This is an unsupported "
                 "configuration.\r\n"},
    {0x80042411, "A critical volume selected for backup exists on a disk which cannot be backed up by "
                 "ASR.\r\n"},
    {0x80042412,
     "No disk that can be used for recovering the system disk can be found. Try the following: a) A "
     "probable system disk may have been excluded by mistake. Review the list of disks that you "
     "have excluded from the recovery for a probable system disk. b) Verify that the disks are "
     "properly connected and are online.\r\n"},
    {0x80042413, "The requested operation could not be completed because there is no usable physical disk "
                 "available for recovery.\r\n"},
    {0x80042414,
     "There is no disk available for restoring the system disk after the disks were excluded. Review "
     "the list of excluded disks.\r\n"},
    {0x80042415, "The disk cannot be excluded from the recovery because it holds a critical volume.\r\n"},
    {0x80042416, "The system partition (System Reserved) is hidden or contains an unrecognized file system. "
                 "Backup does not support this configuration. Change the type of the system partition to a "
                 "recognized file system and retry the backup.\r\n"},
    {0x80042417, "The file share shadow copy operation timed out.\r\n"},
};

static_assert(std::is_sorted(std::begin(vss_messages), std::end(vss_messages),
                             [](const vss_message_t& a, const vss_message_t& b) { return a.id < b.id; }));

const vss_message_t* find_message(DWORD id) {
    auto found = std::lower_bound(std::begin(vss_messages), std::end(vss_messages), id,
                                  [](const vss_message_t& m, DWORD key) { return m.id < key; });
    if (found == std::end(vss_messages) || found->id != id)
        return nullptr;
    return found;
}

// Any non-null value marks the table as loaded.
int loaded_marker;

} // namespace

message_module_t::message_module_t(const char* name) {
    std::wstring wide_name(name, name + std::char_traits<char>::length(name));
    if (auto error = hostsim::win32_call("LoadLibraryA", wide_name))
        load_error_ = *error;
    else
        handle_ = &loaded_marker;
}

message_module_t::~message_module_t() = default;

std::optional<std::string> message_module_t::message(DWORD message_id, DWORD& error) const {
    if (auto injected = hostsim::win32_call("FormatMessageA", std::to_wstring(message_id))) {
        error = *injected;
        return std::nullopt;
    }
    const vss_message_t* found = find_message(message_id);
    if (!found) {
        error = message_id_not_found;
        return std::nullopt;
    }
    return std::string(found->text);
}

} // namespace VSSUtils::detail
