#pragma once

#include <QStringList>

namespace velmora {

class BrowserTabs;
class DebugLog;
class FocusTypeList;
class Preferences;
class TextCatalogue;
class Workspace;

// What the focus tabs of the preferences window and their sheets work on.
struct FocusPreferencesContext
{
    FocusTypeList& focusTypes;
    // The always-blocked addresses (arrBlockedUrls) and where they are kept.
    QStringList& arrBlockedUrls;
    Preferences& preferences;
    const TextCatalogue& texts;
    const DebugLog& log;
    // The installed applications; null where the desktop cannot be read.
    Workspace* workspace = nullptr;
    // The browsers' extensions; null where the bridge is not running.
    BrowserTabs* browserTabs = nullptr;
};

} // namespace velmora
