#include "vssutils/snapshot_info.h"

#include "common/exc/convert.h"
#include "common/logging/log.h"
#include "vssutils/vss_exc.h"

namespace VSSUtils {

namespace {

// Gives the properties back to the platform on every path, also when a copy fails.
class snapshot_properties_t {
public:
    snapshot_properties_t() = default;
    ~snapshot_properties_t() {
        if (filled_)
            VssFreeSnapshotPropertiesInternal(&properties_);
    }
    snapshot_properties_t(const snapshot_properties_t&) = delete;
    snapshot_properties_t& operator=(const snapshot_properties_t&) = delete;

    VSS_SNAPSHOT_PROP* out() { return &properties_; }
    void set_filled() { filled_ = true; }
    const VSS_SNAPSHOT_PROP* operator->() const { return &properties_; }

private:
    VSS_SNAPSHOT_PROP properties_{};
    bool filled_ = false;
};

std::wstring text_or_empty(const wchar_t* text) {
    return text ? std::wstring(text) : std::wstring();
}

} // namespace

VSS_SNAPSHOT_INFO GetSnapshotInfo(BackupComponentsPtr components, const VSS_ID& snapshotId) {
    log_scope_t scope(logging::tool_logger(), "Getting snapshot info");
    snapshot_properties_t properties;
    CheckVss(components->GetSnapshotProperties(snapshotId, properties.out()),
             "Failed to get snapshot properties");
    properties.set_filled();

    VSS_SNAPSHOT_INFO info;
    info.snapshotId = properties->m_SnapshotId;
    info.oldVolume = text_or_empty(properties->m_pwszOriginalVolumeName);
    info.newVolume = text_or_empty(properties->m_pwszSnapshotDeviceObject);
    scope.finish("Old volume: [%1], New volume: [%2]", to_ansi(info.oldVolume), to_ansi(info.newVolume));
    return info;
}

} // namespace VSSUtils
