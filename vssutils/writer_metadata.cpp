#include "vssutils/writer_metadata.h"

#include "common/exc/exc.h"
#include "common/format/format.h"
#include "common/logging/log.h"
#include "vssutils/async_wait.h"
#include "vssutils/vss_exc.h"

namespace VSSUtils {

CVssMetaCache::CVssMetaCache(const VSS_ID& wantedWriterId, bool scanAllWriters)
    : scanAllWriters_(scanAllWriters), wantedWriters_{wantedWriterId} {}

bool CVssMetaCache::Visit(WriterMetadataPtr metadata) {
    auto info = std::make_shared<SWriterMetaInfo>();
    HRESULT hr = metadata->GetIdentity(&info->writerInstanceId, &info->writerId, info->writerName.put(),
                                       &info->usageType, &info->sourceType);
    if (hr < 0) {
        log_exception(logging::tool_logger(),
                      "Failed to retrieve properties of the VSS writer (using IVssExamineWriterMetadata).",
                      VssErrorOnly(hr));
    } else {
        seenWriters_.push_back(info->writerId);
        auto wanted = wantedWriters_.find(info->writerId);
        if (wanted != wantedWriters_.end()) {
            info->metadata = metadata;
            cachedWriters_.push_back(info);
            wantedWriters_.erase(wanted);
        }
    }
    return scanAllWriters_ || !wantedWriters_.empty();
}

std::shared_ptr<SWriterMetaInfo> CVssMetaCache::Find(const VSS_ID& writerId) const {
    for (const auto& info : cachedWriters_)
        if (info->writerId == writerId)
            return info;
    return nullptr;
}

std::shared_ptr<SWriterMetaInfo> CVssMetaCache::Get(const VSS_ID& writerId) const {
    auto info = Find(writerId);
    if (!info)
        throw exc::runtime_exc_t("There is no metadata for writer '%1'.", guid_to_string(writerId));
    return info;
}

void EnumWritersMetadata(BackupComponentsPtr components, IMetaDataVisitor& visitor,
                         ITestCancelCallback* probe) {
    log_scope_t scope(log_scope_t::silent, logging::tool_logger(),
                      "Iterating through writers metadata collection");
    AsyncPtr async;
    CheckVss(components->GatherWriterMetadata(async.put()), "Failed to collect VSS writers metadata.");
    // A cancelled wait isn't judged here: the calls below fail if they must.
    WaitAsyncOperation(async, probe, "Waiting for VSS metadata task.", "Unknown status of async operation");

    UINT count = 0;
    CheckVss(components->GetWriterMetadataCount(&count),
             "Failed to get number of items in VSS metadata collection.");
    for (UINT index = 0; index < count; ++index) {
        VSS_ID instanceId = GUID_NULL;
        WriterMetadataPtr metadata;
        HRESULT hr = components->GetWriterMetadata(index, &instanceId, metadata.put());
        if (hr < 0) {
            log_warning_exception(logging::tool_logger(),
                                  format_message("Failed to get specific writer metadata. Index: '%1'",
                                                 num_to_string(static_cast<std::uint64_t>(index))),
                                  VssErrorOnly(hr));
            continue;
        }
        if (!visitor.Visit(metadata)) {
            log_info(logging::tool_logger(), "Breaking via visitor request");
            break;
        }
    }
    scope.close_quietly();
}

} // namespace VSSUtils
