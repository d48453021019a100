#pragma once

#include "FocusTypes.h"

#include <QColor>
#include <QObject>
#include <QStringList>
#include <QVariantList>

namespace velmora {

class DebugLog;
class Preferences;

// The user's focus types (`arrFocusType`): which applications and addresses stay
// usable in a focus block of each type. The list lives in the run state and in
// the preferences under kUserdefaultsArrFocusTypes as a list of maps; only this
// class changes it, and every change writes the whole list back and emits
// typesChanged().
//
// Rows are indexes into the list. The meetings type and the user's types come
// first, in creation order; the default type ("Complete anarchy!") is always
// last. The running block is not stored anywhere else: its type is the one whose
// "isOn" is true. Readers take a row out of range, or a key that is missing or of
// the wrong type, as an empty type: empty text, empty list, false, black.
class FocusTypeList : public QObject
{
    Q_OBJECT
public:
    FocusTypeList(QVariantList& arrFocusType, Preferences& preferences, const DebugLog& log,
                  QObject* parent = nullptr);

    // At launch, before anything reads the list: reads the stored list, repairs
    // it (no block survives a restart, the default is last, the meetings type
    // exists, bad data takes its fallbacks with a debug-log line) and writes it back.
    void load();

    // --- reading
    const QVariantList& arrFocusType() const { return m_types; }
    int count() const { return static_cast<int>(m_types.size()); }
    bool isValidRow(int row) const { return row >= 0 && row < count(); }
    QVariantMap type(int row) const;
    QString name(int row) const;
    // "RRGGBB" as stored, and the colour it reads as.
    QString colorString(int row) const;
    QColor color(int row) const;
    // Full paths of the desktop entries of the allowed applications.
    QStringList appsArray(int row) const;
    // Allowed address patterns.
    QStringList urlsArray(int row) const;
    bool isOn(int row) const;
    bool isAllowedAllApps(int row) const;
    bool isAllowedAllUrls(int row) const;
    bool isDefault(int row) const;
    bool isMeetings(int row) const;
    // The two built-in types can be neither renamed, recoloured nor removed.
    bool isBuiltIn(int row) const { return isDefault(row) || isMeetings(row); }

    // Whether a block runs, and of which type (the first that is on; -1 if none).
    bool isFocusModeOn() const;
    int indexOfTypeOn() const;
    int meetingsIndex() const;

    // Names clash when equal ignoring case; `exceptRow` is skipped, so that a
    // rename may change only the case.
    bool isFocusNameAvailable(const QString& newName, int exceptRow = -1) const;

    // --- the user's changes
    // Inserts a new type before the default; answers its row.
    int addFocusType(const QString& name, const QString& color);
    // Sets name and colour of a type that is not built in; false (and nothing
    // changes) for a built-in type or a row out of range. Name clashes are the
    // caller's to check.
    bool editFocusType(int row, const QString& name, const QString& color);
    // Copies the type with the first free name "<name> N" (N = 1, 2, ...), off and
    // without the built-in marker, just after the source, or just before the
    // default when the default is copied. Answers the copy's row, -1 for none.
    int makeDuplicateFocus(int row);

    enum class Removal
    {
        Allowed,
        BuiltIn,    // the default or the meetings type
        RunningType // the type of the running block
    };
    // Why a row could not be removed, checked in this order: built-in, running.
    Removal removalCheck(int row) const;
    // Removes the row if removalCheck allows it; answers whether it did.
    bool removeFocusType(int row);

    // The rules of one type. When the type is on, the blockers' lists are filled
    // again at once, so the running block follows the change.
    void setAllowedAllApps(int row, bool allowAll);
    void setAllowedAllUrls(int row, bool allowAll);
    // Appends desktop entries, skipping any whose file name (ignoring case) is
    // already listed. Answers whether one was skipped.
    bool addApps(int row, const QStringList& desktopFiles);
    void removeApp(int row, int index);
    // Address entries are edited by the address sheet, which checks them first.
    void addUrl(int row, const QString& url);
    void replaceUrl(int row, int index, const QString& url);
    void removeUrl(int row, int index);

    // --- the block
    // Marks the type of the block that starts (and no other) or ends.
    void setOn(int row, bool on);
    void setAllOff();

    // What a flip of a type's switch on the preferences screen leads to. The
    // switch itself only follows a block that really starts or ends.
    enum class Toggle
    {
        ShowAbortDialog, // turned off: a block ends only through the abort dialog
        KeepOn,          // turned off while the discouraging sheet is up
        KeepOff,         // turned on while the discouraging sheet is up
        AlreadyRunning,  // turned on while another type is on: tell the user
        ShowStartDialog  // turned on: ask for the block's time and intention
    };
    static Toggle toggleDecision(bool turnedOn, bool isDiscourageSheetShown, bool isFocusModeOn);

    // --- what the blockers read: the rules of the type that is on, copied when a
    // block starts (the session calls these) and whenever a rule of that type
    // changes. With no type on, nothing is allowed to all and the lists are empty.
    void fillAllowAppArray();
    void fillAllowUrlArray();
    bool isAllowedAllAppsInFocus() const { return m_isAllowedAllAppsInFocus; }
    const QStringList& allowAppsPath() const { return m_allowAppsPath; }
    bool isAllowedAllUrlsInFocus() const { return m_isAllowedAllUrlsInFocus; }
    const QStringList& allowUrl() const { return m_allowUrl; }

Q_SIGNALS:
    // Anything changed: a type added, removed or moved, a name, a colour, a rule,
    // or which type is on. Lists built from rows should be built again.
    void typesChanged();
    // The blockers' lists were filled again.
    void allowAppsChanged();
    void allowUrlsChanged();

private:
    void set(int row, const QString& key, const QVariant& value);
    void save();

    QVariantList& m_types;
    Preferences& m_preferences;
    const DebugLog& m_log;
    bool m_isAllowedAllAppsInFocus = false;
    QStringList m_allowAppsPath;
    bool m_isAllowedAllUrlsInFocus = false;
    QStringList m_allowUrl;
};

} // namespace velmora
