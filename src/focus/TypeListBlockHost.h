#pragma once

#include "FocusBlockHost.h"

namespace velmora {

struct RunState;

// The block as the focus-type list alone tells it: which type is on and what it
// allows. It knows no end time, so the block page shows none; the focus session
// answers that once it runs the blocks.
class TypeListBlockHost : public FocusBlockHost
{
public:
    explicit TypeListBlockHost(const RunState& state)
        : m_state(state)
    {
    }

    bool isFocusModeOn() const override;
    QStringList onFocusTypeNames() const override;
    QStringList allowAppsPath() const override;
    bool isAllowedAllAppsInFocus() const override;
    QStringList allowUrl() const override;
    bool isAllowedAllUrlsInFocus() const override;
    std::optional<QDateTime> focusModeEndTime() const override { return std::nullopt; }

private:
    const RunState& m_state;
};

} // namespace velmora
