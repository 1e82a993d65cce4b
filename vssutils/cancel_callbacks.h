// Cancel probes: asked by a wait before each poll whether it should give up.
#pragma once

#include <memory>

namespace win {
class win_manual_reset_event_t;
}

namespace VSSUtils {

// Probes live on their caller's stack and are never deleted through this interface.
class ITestCancelCallback {
public:
    virtual bool TestCancel() = 0;

protected:
    ~ITestCancelCallback() = default;
};

// For the waits that must run to their end.
class CDefaultTestCancelCallback final : public ITestCancelCallback {
public:
    bool TestCancel() override { return false; }
};

// Fires once the event is set; the event stays set, so every later wait gives up before its first poll.
class CWinEventTestCancelCallback final : public ITestCancelCallback {
public:
    explicit CWinEventTestCancelCallback(std::shared_ptr<win::win_manual_reset_event_t> event);
    bool TestCancel() override;

private:
    std::shared_ptr<win::win_manual_reset_event_t> event_;
};

} // namespace VSSUtils
