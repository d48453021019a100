#pragma once

#include <optional>
#include <QDateTime>
#include <QStringList>

namespace velmora {

// What the application and address blockers read about the focus block that
// runs. The focus session answers; the blockers never change it.
class FocusBlockHost
{
public:
    virtual ~FocusBlockHost() = default;

    virtual bool isFocusModeOn() const = 0;
    // "name" of every type whose "isOn" is true, in list order: normally one.
    virtual QStringList onFocusTypeNames() const = 0;
    // As FocusTypeList::fillAllowAppArray() leaves them: the desktop-file paths of the type that
    // is on, and whether it allows every application.
    virtual QStringList allowAppsPath() const = 0;
    virtual bool isAllowedAllAppsInFocus() const = 0;
    // As FocusTypeList::fillAllowUrlArray() leaves them.
    virtual QStringList allowUrl() const = 0;
    virtual bool isAllowedAllUrlsInFocus() const = 0;
    // When the block ends: the chosen end, or today's shut-off time for a block
    // that runs until then; nothing for a block without an end (a meeting).
    virtual std::optional<QDateTime> focusModeEndTime() const = 0;
};

} // namespace velmora
