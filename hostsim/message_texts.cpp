// The texts the simulated Windows gives for the codes the tool meets, word for word, each with
// the closing line break that the system's own texts carry: the system's message table, the
// internet functions' and the message module of VSS.
#include "hostsim/host_access.h"

#include <algorithm>
#include <iterator>

namespace hostsim {

namespace {

struct message_t {
    std::uint32_t code;
    const char* text;
};

constexpr message_t system_texts[] = {
    {0, "The operation completed successfully.\r\n"},
    {1, "Incorrect function.\r\n"},
    {2, "The system cannot find the file specified.\r\n"},
    {3, "The system cannot find the path specified.\r\n"},
    {4, "The system cannot open the file.\r\n"},
    {5, "Access is denied.\r\n"},
    {6, "The handle is invalid.\r\n"},
    {8, "Not enough memory resources are available to process this command.\r\n"},
    {13, "The data is invalid.\r\n"},
    {14, "Not enough memory resources are available to complete this operation.\r\n"},
    {15, "The system cannot find the drive specified.\r\n"},
    {17, "The system cannot move the file to a different disk drive.\r\n"},
    {18, "There are no more files.\r\n"},
    {19, "The media is write protected.\r\n"},
    {21, "The device is not ready.\r\n"},
    {31, "A device attached to the system is not functioning.\r\n"},
    {32, "The process cannot access the file because it is being used by another process.\r\n"},
    {33, "The process cannot access the file because another process has locked a portion of the "
         "file.\r\n"},
    {38, "Reached the end of the file.\r\n"},
    {50, "The request is not supported.\r\n"},
    {53, "The network path was not found.\r\n"},
    {67, "The network name cannot be found.\r\n"},
    {80, "The file exists.\r\n"},
    {87, "The parameter is incorrect.\r\n"},
    {109, "The pipe has been ended.\r\n"},
    {112, "There is not enough space on the disk.\r\n"},
    {120, "This function is not supported on this system.\r\n"},
    {121, "The semaphore timeout period has expired.\r\n"},
    {122, "The data area passed to a system call is too small.\r\n"},
    {123, "The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {126, "The specified module could not be found.\r\n"},
    {127, "The specified procedure could not be found.\r\n"},
    {145, "The directory is not empty.\r\n"},
    {161, "The specified path is invalid.\r\n"},
    {170, "The requested resource is in use.\r\n"},
    {183, "Cannot create a file when that file already exists.\r\n"},
    {203, "The system could not find the environment option that was entered.\r\n"},
    {206, "The filename or extension is too long.\r\n"},
    {223, "The file size exceeds the limit allowed and cannot be saved.\r\n"},
    {231, "All pipe instances are busy.\r\n"},
    {232, "The pipe is being closed.\r\n"},
    {233, "No process is on the other end of the pipe.\r\n"},
    {234, "More data is available.\r\n"},
    {258, "The wait operation timed out.\r\n"},
    {259, "No more data is available.\r\n"},
    {267, "The directory name is invalid.\r\n"},
    {535, "There is a process on other end of the pipe.\r\n"},
    {995, "The I/O operation has been aborted because of either a thread exit or an application "
          "request.\r\n"},
    {997, "Overlapped I/O operation is in progress.\r\n"},
    {1113, "No mapping for the Unicode character exists in the target multi-byte code page.\r\n"},
    {1117, "The request could not be performed because of an I/O device error.\r\n"},
    {1142, "An attempt was made to create more links on a file than the file system supports.\r\n"},
    {1168, "Element not found.\r\n"},
    {1223, "The operation was canceled by the user.\r\n"},
    {1314, "A required privilege is not held by the client.\r\n"},
    {1359, "An internal error occurred.\r\n"},
    {1460, "This operation returned because the timeout period expired.\r\n"},
    {1705, "The string universal unique identifier (UUID) is invalid.\r\n"},
    {1722, "The RPC server is unavailable.\r\n"},
    {1813, "The specified resource type cannot be found in the image file.\r\n"},
    {1921, "The name of the file cannot be resolved by the system.\r\n"},
    // HRESULTs outside the Win32 facility that the system table also knows.
    {0x80004001u, "Not implemented\r\n"},
    {0x80004002u, "No such interface supported\r\n"},
    {0x80004003u, "Invalid pointer\r\n"},
    {0x80004004u, "Operation aborted\r\n"},
    {0x80004005u, "Unspecified error\r\n"},
    {0x8000FFFFu, "Catastrophic failure\r\n"},
    {0x80010106u, "Cannot change thread mode after it is set.\r\n"},
    {0x800401F0u, "CoInitialize has not been called.\r\n"},
};

constexpr message_t internet_texts[] = {
    {12002, "The operation timed out\r\n"},
    {12005, "The URL is invalid\r\n"},
    {12006, "The URL does not use a recognized protocol\r\n"},
    {12007, "The server name or address could not be resolved\r\n"},
    {12029, "A connection with the server could not be established\r\n"},
    {12030, "The connection with the server was terminated abnormally\r\n"},
    {12031, "The connection with the server was reset\r\n"},
    {12152, "The server returned an invalid or unrecognized response\r\n"},
};

constexpr message_t vss_texts[] = {
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

// Each table is sorted by code, for the binary search below.
constexpr bool is_sorted(const auto& table) {
    return std::is_sorted(std::begin(table), std::end(table),
                          [](const message_t& a, const message_t& b) { return a.code < b.code; });
}
static_assert(is_sorted(system_texts) && is_sorted(internet_texts) && is_sorted(vss_texts));

template <std::size_t size>
std::optional<std::string> lookup(const message_t (&table)[size], std::uint32_t code) {
    const message_t* found =
        std::lower_bound(std::begin(table), std::end(table), code,
                         [](const message_t& m, std::uint32_t key) { return m.code < key; });
    if (found == std::end(table) || found->code != code)
        return std::nullopt;
    return std::string(found->text);
}

// An HRESULT of the Win32 facility reads as the Win32 code it carries.
constexpr std::uint32_t win32_facility_mask = 0xFFFF0000u;
constexpr std::uint32_t win32_facility_failure = 0x80070000u;

} // namespace

std::optional<std::string> system_message(std::uint32_t code) {
    if ((code & win32_facility_mask) == win32_facility_failure)
        return lookup(system_texts, code & ~win32_facility_mask);
    return lookup(system_texts, code);
}

std::optional<std::string> internet_message(std::uint32_t code) {
    return lookup(internet_texts, code);
}

std::optional<std::string> vss_message(std::uint32_t id) {
    return lookup(vss_texts, id);
}

} // namespace hostsim
