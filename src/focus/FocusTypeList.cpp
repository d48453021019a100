#include "FocusTypeList.h"

#include "DebugLog.h"
#include "PreferenceKeys.h"
#include "Preferences.h"

#include <algorithm>
#include <QFileInfo>

namespace velmora {

FocusTypeList::FocusTypeList(QVariantList& arrFocusType, Preferences& preferences, const DebugLog& log,
                             QObject* parent)
    : QObject(parent)
    , m_types(arrFocusType)
    , m_preferences(preferences)
    , m_log(log)
{
}

void FocusTypeList::load()
{
    const QVariant stored = m_preferences.value(keys::kUserdefaultsArrFocusTypes);
    QStringList repairs;
    QVariantList list;
    // The preferences file gives an empty list back as nothing.
    if (stored.typeId() == QMetaType::QVariantList)
        list = stored.toList();
    else if (stored.isValid())
        repairs << QStringLiteral("Stored focus types were not a list; starting again from the "
                                  "built-in types");
    QStringList more;
    m_types = focus::repairAtLaunch(list, &more);
    for (const QString& line : repairs + more)
        m_log.addLog(line);
    save();
    Q_EMIT typesChanged();
}

QVariantMap FocusTypeList::type(int row) const
{
    return isValidRow(row) ? m_types.at(row).toMap() : QVariantMap();
}

QString FocusTypeList::name(int row) const
{
    return focus::text(type(row), focus::key::name);
}

QString FocusTypeList::colorString(int row) const
{
    return focus::text(type(row), focus::key::color);
}

QColor FocusTypeList::color(int row) const
{
    return focus::colorFromString(colorString(row));
}

QStringList FocusTypeList::appsArray(int row) const
{
    return focus::textList(type(row), focus::key::appsArray);
}

QStringList FocusTypeList::urlsArray(int row) const
{
    return focus::textList(type(row), focus::key::urlsArray);
}

bool FocusTypeList::isOn(int row) const
{
    return focus::flag(type(row), focus::key::isOn);
}

bool FocusTypeList::isAllowedAllApps(int row) const
{
    return focus::flag(type(row), focus::key::isAllowedAllApps);
}

bool FocusTypeList::isAllowedAllUrls(int row) const
{
    return focus::flag(type(row), focus::key::isAllowedAllUrls);
}

bool FocusTypeList::isDefault(int row) const
{
    return focus::flag(type(row), focus::key::isDefault);
}

bool FocusTypeList::isMeetings(int row) const
{
    return focus::flag(type(row), focus::key::isMeetings);
}

bool FocusTypeList::isFocusModeOn() const
{
    return indexOfTypeOn() >= 0;
}

int FocusTypeList::indexOfTypeOn() const
{
    for (int row = 0; row < count(); ++row) {
        if (isOn(row))
            return row;
    }
    return -1;
}

int FocusTypeList::meetingsIndex() const
{
    for (int row = 0; row < count(); ++row) {
        if (isMeetings(row))
            return row;
    }
    return -1;
}

bool FocusTypeList::isFocusNameAvailable(const QString& newName, int exceptRow) const
{
    const QString wanted = newName.toLower();
    for (int row = 0; row < count(); ++row) {
        const QVariant stored = type(row).value(focus::key::name);
        if (row == exceptRow || stored.typeId() != QMetaType::QString)
            continue;
        if (stored.toString().toLower() == wanted)
            return false;
    }
    return true;
}

int FocusTypeList::addFocusType(const QString& name, const QString& color)
{
    const int row = qMax(0, count() - 1);
    m_types.insert(row, focus::makeUserType(name, color));
    save();
    Q_EMIT typesChanged();
    return row;
}

bool FocusTypeList::editFocusType(int row, const QString& name, const QString& color)
{
    if (!isValidRow(row) || isBuiltIn(row))
        return false;
    QVariantMap changed = type(row);
    changed.insert(focus::key::name, name);
    changed.insert(focus::key::color, color);
    m_types[row] = changed;
    save();
    Q_EMIT typesChanged();
    return true;
}

int FocusTypeList::makeDuplicateFocus(int row)
{
    if (!isValidRow(row))
        return -1;
    QVariantMap copy = type(row);
    const bool fromDefault = isDefault(row);
    copy.remove(focus::key::isDefault);
    copy.remove(focus::key::isMeetings);
    const QString base = focus::text(copy, focus::key::name);
    QString candidate;
    for (int n = 1;; ++n) {
        candidate = base + u' ' + QString::number(n);
        if (isFocusNameAvailable(candidate))
            break;
    }
    copy.insert(focus::key::name, candidate);
    copy.insert(focus::key::isOn, false);
    const int at = fromDefault ? row : row + 1;
    m_types.insert(at, copy);
    save();
    Q_EMIT typesChanged();
    return at;
}

FocusTypeList::Removal FocusTypeList::removalCheck(int row) const
{
    if (isBuiltIn(row))
        return Removal::BuiltIn;
    if (isOn(row))
        return Removal::RunningType;
    return Removal::Allowed;
}

bool FocusTypeList::removeFocusType(int row)
{
    if (!isValidRow(row) || removalCheck(row) != Removal::Allowed)
        return false;
    m_types.removeAt(row);
    save();
    Q_EMIT typesChanged();
    return true;
}

void FocusTypeList::setAllowedAllApps(int row, bool allowAll)
{
    set(row, focus::key::isAllowedAllApps, allowAll);
    if (isOn(row))
        fillAllowAppArray();
}

void FocusTypeList::setAllowedAllUrls(int row, bool allowAll)
{
    set(row, focus::key::isAllowedAllUrls, allowAll);
    if (isOn(row))
        fillAllowUrlArray();
}

bool FocusTypeList::addApps(int row, const QStringList& desktopFiles)
{
    if (!isValidRow(row))
        return false;
    QStringList apps = appsArray(row);
    bool skipped = false;
    // The same entry from two folders is one application.
    auto fileName = [](const QString& path) { return QFileInfo(path).fileName().toLower(); };
    for (const QString& file : desktopFiles) {
        const QString wanted = fileName(file);
        const bool listed = std::any_of(apps.cbegin(), apps.cend(),
                                        [&](const QString& app) { return fileName(app) == wanted; });
        if (listed)
            skipped = true;
        else
            apps.append(file);
    }
    set(row, focus::key::appsArray, apps);
    fillAllowAppArray();
    return skipped;
}

void FocusTypeList::removeApp(int row, int index)
{
    QStringList apps = appsArray(row);
    if (index < 0 || index >= apps.size())
        return;
    apps.removeAt(index);
    set(row, focus::key::appsArray, apps);
    if (isOn(row))
        fillAllowAppArray();
}

void FocusTypeList::addUrl(int row, const QString& url)
{
    if (!isValidRow(row))
        return;
    set(row, focus::key::urlsArray, urlsArray(row) << url);
    if (isOn(row))
        fillAllowUrlArray();
}

void FocusTypeList::replaceUrl(int row, int index, const QString& url)
{
    QStringList urls = urlsArray(row);
    if (index < 0 || index >= urls.size())
        return;
    urls[index] = url;
    set(row, focus::key::urlsArray, urls);
    if (isOn(row))
        fillAllowUrlArray();
}

void FocusTypeList::removeUrl(int row, int index)
{
    QStringList urls = urlsArray(row);
    if (index < 0 || index >= urls.size())
        return;
    urls.removeAt(index);
    set(row, focus::key::urlsArray, urls);
    if (isOn(row))
        fillAllowUrlArray();
}

void FocusTypeList::setOn(int row, bool on)
{
    if (!isValidRow(row))
        return;
    for (int other = 0; on && other < count(); ++other) {
        if (other != row && isOn(other)) {
            m_log.addLog(QStringLiteral("Focus type %1 was still on; turned off").arg(name(other)));
            QVariantMap map = type(other);
            map.insert(focus::key::isOn, false);
            m_types[other] = map;
        }
    }
    set(row, focus::key::isOn, on);
}

void FocusTypeList::setAllOff()
{
    for (QVariant& item : m_types) {
        QVariantMap map = item.toMap();
        map.insert(focus::key::isOn, false);
        item = map;
    }
    save();
    Q_EMIT typesChanged();
}

FocusTypeList::Toggle FocusTypeList::toggleDecision(bool turnedOn, bool isDiscourageSheetShown,
                                                    bool isFocusModeOn)
{
    if (!turnedOn)
        return isDiscourageSheetShown ? Toggle::KeepOn : Toggle::ShowAbortDialog;
    if (isDiscourageSheetShown)
        return Toggle::KeepOff;
    if (isFocusModeOn)
        return Toggle::AlreadyRunning;
    return Toggle::ShowStartDialog;
}

void FocusTypeList::fillAllowAppArray()
{
    m_isAllowedAllAppsInFocus = false;
    m_allowAppsPath.clear();
    for (int row = 0; row < count(); ++row) {
        if (!isOn(row))
            continue;
        if (isAllowedAllApps(row))
            m_isAllowedAllAppsInFocus = true;
        m_allowAppsPath = appsArray(row);
    }
    Q_EMIT allowAppsChanged();
}

void FocusTypeList::fillAllowUrlArray()
{
    m_isAllowedAllUrlsInFocus = false;
    m_allowUrl.clear();
    for (int row = 0; row < count(); ++row) {
        if (!isOn(row))
            continue;
        if (isAllowedAllUrls(row))
            m_isAllowedAllUrlsInFocus = true;
        m_allowUrl = urlsArray(row);
    }
    Q_EMIT allowUrlsChanged();
}

void FocusTypeList::set(int row, const QString& key, const QVariant& value)
{
    if (!isValidRow(row))
        return;
    QVariantMap map = type(row);
    map.insert(key, value);
    m_types[row] = map;
    save();
    Q_EMIT typesChanged();
}

void FocusTypeList::save()
{
    m_preferences.setValue(keys::kUserdefaultsArrFocusTypes, m_types);
}

} // namespace velmora
