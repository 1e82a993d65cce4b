// The walk over the writers' metadata and the cache that keeps the metadata of the wanted writers.
#pragma once

#include "compat/unique_any.h"
#include "vssutils/cancel_callbacks.h"
#include "vssutils/com.h"

#include <cstring>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace VSSUtils {

// Visitors are owned by their concrete type, never deleted through this interface.
class IMetaDataVisitor {
public:
    // False stops the walk.
    virtual bool Visit(WriterMetadataPtr metadata) = 0;

protected:
    ~IMetaDataVisitor() = default;
};

// The metadata of one writer; read-only once the walk has ended.
struct SWriterMetaInfo {
    WriterMetadataPtr metadata;
    compat::unique_bstr_t writerName;
    VSS_USAGE_TYPE usageType = VSS_UT_UNDEFINED;
    VSS_SOURCE_TYPE sourceType = VSS_ST_UNDEFINED;
    VSS_ID writerInstanceId = GUID_NULL;
    VSS_ID writerId = GUID_NULL;
};

// Orders ids by their bytes.
struct VssIdLess {
    bool operator()(const VSS_ID& a, const VSS_ID& b) const {
        return std::memcmp(&a, &b, sizeof(VSS_ID)) < 0;
    }
};

class CVssMetaCache final : public IMetaDataVisitor {
public:
    // With scanAllWriters the walk reaches every writer; without, it stops once all wanted are found.
    CVssMetaCache(const VSS_ID& wantedWriterId, bool scanAllWriters = true);

    bool Visit(WriterMetadataPtr metadata) override;

    // The first cached writer with that writer id, or null.
    std::shared_ptr<SWriterMetaInfo> Find(const VSS_ID& writerId) const;
    // As Find, but the writer's absence fails.
    std::shared_ptr<SWriterMetaInfo> Get(const VSS_ID& writerId) const;

    // Every writer whose identity could be read, wanted or not, in the order met.
    const std::vector<VSS_ID>& SeenWriters() const { return seenWriters_; }

private:
    bool scanAllWriters_;
    std::set<VSS_ID, VssIdLess> wantedWriters_;
    std::vector<std::shared_ptr<SWriterMetaInfo>> cachedWriters_;
    std::vector<VSS_ID> seenWriters_;
};

// Gathers the writers' metadata and hands each writer's to the visitor. A writer whose metadata
// can't be read is skipped with a warning. `probe` may be null.
void EnumWritersMetadata(BackupComponentsPtr components, IMetaDataVisitor& visitor,
                         ITestCancelCallback* probe);

} // namespace VSSUtils
