// The list of focus types (its repair at launch, names, copies, colours, the rules the
// blockers read) and the focus tab that edits it, on fake preferences and a fake desktop.

#include "addApplicationVc.h"
#include "addFocusTypeVc.h"
#include "addWebUrlVc.h"
#include "blockedUrlsVc.h"
#include "DebugLog.h"
#include "FakePorts.h"
#include "focusPreferencesVc.h"
#include "FocusTypeList.h"
#include "PreferenceKeys.h"
#include "TextCatalogue.h"

#include <QtTest>
#include <QtWidgets>

using namespace velmora;
using namespace velmora::test;
using namespace Qt::StringLiterals;
namespace key = focus::key;

namespace {

QVariantMap userType(const QString& name, QVariantMap extra = {})
{
    QVariantMap type = focus::makeUserType(name, u"3D8B6E"_s);
    for (auto it = extra.cbegin(); it != extra.cend(); ++it)
        type.insert(it.key(), it.value());
    return type;
}

QStringList names(const FocusTypeList& list)
{
    QStringList out;
    for (int row = 0; row < list.count(); ++row)
        out << list.name(row);
    return out;
}

const QString kDefault = focus::kDefaultTypeName;
const QString kMeetings = focus::kMeetingsTypeName;

} // namespace

// The type list and its focus tab on fake preferences and a fake desktop. Alerts are
// recorded instead of shown: "title|text" for a notice, the question for a confirmation.
struct Screens
{
    QTemporaryDir dir;
    FakeClock clock;
    MemoryPreferences preferences;
    DebugLog log{clock, dir.filePath(u"debug.txt"_s)};
    TextCatalogue texts;
    FakeWorkspace workspace;
    QVariantList types;
    QStringList blocked{u"example.org"_s};
    FocusTypeList list{types, preferences, log};
    FocusPreferencesContext ctx{list, blocked, preferences, texts, log, &workspace};
    focusPreferencesVc tab{ctx};
    QStringList alerts;
    bool answer = true;

    Screens()
    {
        preferences.setValue(u"kUserdefaultsArrFocusTypes"_s,
                             QVariantList{focus::makeUserType(u"Work"_s, u"3D8B6E"_s)});
        list.load(); // Work, Meetings, default
        tab.inform = [this](const QString& title, const QString& text) { alerts << title + u'|' + text; };
        tab.ask = [this](const QString& question, const QString&, const QString&) {
            alerts << question;
            return answer;
        };
        tab.resize(900, 640);
        tab.show();
    }

    // The list as a launch repairs it from what was stored.
    FocusTypeList& load(const QVariant& stored)
    {
        preferences.setValue(keys::kUserdefaultsArrFocusTypes, stored);
        list.load();
        return list;
    }
    QString logText() const
    {
        QFile file(log.path());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
};

class FocusTypesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void launchRepair_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("logged");

        const auto row = [](const char* name, const QVariant& stored, const QStringList& names,
                            const char* logged = "") {
            QTest::newRow(name) << stored << names << QString(logged);
        };
        QVariantMap oldDefault = focus::makeDefaultType();
        oldDefault.insert(key::name, u"Renamed by hand"_s);
        const QVariantMap work = userType(u"Work"_s, {{key::isOn, true}});
        const QStringList builtIns{kMeetings, kDefault};
        row("default moved last and named again, meetings inserted", QVariantList{oldDefault, work},
            QStringList{u"Work"_s} + builtIns);
        row("not a list", u"junk"_s, builtIns, "not a list");
        row("not a list of maps", QVariantList{work, u"x"_s}, builtIns, "not a list of dictionaries");
        row("two types on", QVariantList{work, userType(u"Read"_s, {{key::isOn, true}})},
            QStringList{u"Work"_s, u"Read"_s} + builtIns, "2 focus types were on");
        row("missing and wrongly typed keys",
            QVariantList{QVariantMap{{key::name, 7}, {key::appsArray, 3}, {key::isAllowedAllApps, u"yes"_s}}},
            QStringList{QString()} + builtIns,
            "name, color, appsArray, urlsArray, isOn, isAllowedAllApps, isAllowedAllUrls");
        row("colour not hexadecimal", QVariantList{userType(u"Work"_s, {{key::color, u"red"_s}})},
            QStringList{u"Work"_s} + builtIns, "\"Work\": missing or unreadable color");
    }

    void launchRepair()
    {
        QFETCH(QVariant, stored);
        QFETCH(QStringList, names);
        QFETCH(QString, logged);

        Screens s;
        const FocusTypeList& types = s.load(stored);
        QCOMPARE(::names(types), names);
        QVERIFY(!types.isFocusModeOn());
        QVERIFY(types.isDefault(types.count() - 1));
        QVERIFY(types.isMeetings(types.count() - 2));
        for (int row = 0; row < types.count(); ++row) {
            const QVariantMap type = types.type(row);
            QCOMPARE(type.value(key::isOn).typeId(), QMetaType::Bool);
            QCOMPARE(type.value(key::appsArray).typeId(), QMetaType::QStringList);
            QVERIFY(focus::isHexColorString(type.value(key::color).toString()));
        }
        QCOMPARE(s.preferences.mapList(keys::kUserdefaultsArrFocusTypes)->size(), types.count());
        if (logged.isEmpty())
            QVERIFY2(s.logText().isEmpty(), qPrintable(s.logText()));
        else
            QVERIFY2(s.logText().contains(logged), qPrintable(s.logText()));
    }

    void duplicateNaming_data()
    {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("copy");
        QTest::addColumn<int>("offset"); // where the copy lands, from the source row
        // Rows: Work, Work 1, Meetings, default.
        QTest::newRow("next free number") << u"Work"_s << u"Work 2"_s << 1;
        QTest::newRow("a copy of a copy") << u"Work 1"_s << u"Work 1 1"_s << 1;
        QTest::newRow("meetings, without its marker") << kMeetings << u"Meetings 1"_s << 1;
        QTest::newRow("the default, just before it") << kDefault << kDefault + u" 1"_s << 0;
    }

    void duplicateNaming()
    {
        QFETCH(QString, source);
        QFETCH(QString, copy);
        QFETCH(int, offset);
        Screens s;
        FocusTypeList& types = s.load(QVariantList{userType(u"Work"_s), userType(u"Work 1"_s)});
        const int row = static_cast<int>(::names(types).indexOf(source));
        types.setOn(row, !types.isBuiltIn(row));
        QVERIFY(!types.removeFocusType(row)); // running or built in: it stays
        const QStringList apps = types.appsArray(row);

        const int at = types.makeDuplicateFocus(row);
        QCOMPARE(at, row + offset);
        QCOMPARE(types.name(at), copy);
        QVERIFY(!types.isOn(at) && !types.isBuiltIn(at));
        QCOMPARE(types.appsArray(at), apps);
        QVERIFY(types.isDefault(types.count() - 1));
        QVERIFY(types.removeFocusType(at)); // a copy of a built-in type can go
    }

    // A change to the running type's rules reaches the blockers at once.
    void rulesOfTheRunningTypeReachTheBlockers()
    {
        Screens s;
        FocusTypeList& types = s.load(QVariantList{userType(u"Work"_s)});
        types.setOn(0, true);
        types.fillAllowUrlArray();
        QSignalSpy urls(&types, &FocusTypeList::allowUrlsChanged);
        types.setAllowedAllUrls(0, false);
        types.addUrl(0, u"example.org"_s);
        QCOMPARE(urls.count(), 2);
        QVERIFY(!types.isAllowedAllUrlsInFocus());
        QCOMPARE(types.allowUrl(), QStringList{u"example.org"_s});
    }

    void removalRefusalsSayWhy_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("on");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("alert");
        QTest::addColumn<int>("left");
        const QString builtIn = u"Can not delete.|The Default focus type cannot be deleted."_s;
        const QString confirm = u"Are you sure you want to delete the selected Focus type?"_s;
        QTest::newRow("default") << 2 << false << true << builtIn << 3;
        QTest::newRow("running") << 0 << true << true
                                 << u"Focus mode is on. Please abort the focus mode to delete it.|"_s << 3;
        QTest::newRow("confirmed") << 0 << false << true << confirm << 2;
        QTest::newRow("declined") << 0 << false << false << confirm << 3;
    }

    void removalRefusalsSayWhy()
    {
        QFETCH(int, row);
        QFETCH(bool, on);
        QFETCH(bool, yes);
        QFETCH(QString, alert);
        QFETCH(int, left);
        Screens s;
        s.list.setOn(row, on);
        s.answer = yes;
        s.tab.selectRow(row);
        s.tab.btnRemoveFocusType->click();
        QCOMPARE(s.alerts, QStringList{alert});
        QCOMPARE(s.list.count(), left);
        QCOMPARE(s.tab.tblViewFocusType->count(), left);
    }

    void typeSheetRefusesClashingNames_data()
    {
        QTest::addColumn<int>("editRow"); // -1: adding
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("refused");
        QTest::newRow("adding another case") << -1 << u"WORK"_s << true;
        QTest::newRow("adding a new name") << -1 << u"Reading"_s << false;
        QTest::newRow("renaming to another case") << 0 << u"work"_s << false;
        QTest::newRow("renaming to a built-in's name") << 0 << u"Meetings"_s << true;
    }

    void typeSheetRefusesClashingNames()
    {
        QFETCH(int, editRow);
        QFETCH(QString, name);
        QFETCH(bool, refused);
        Screens s;
        if (editRow < 0) {
            s.tab.btnAddFocusType->click();
        } else {
            s.tab.selectRow(editRow);
            s.tab.tableRowFocusTypeDoubleClicked(editRow);
        }
        addFocusTypeVc& sheet = *s.tab.addFocusTypeVcObj;
        QVERIFY(sheet.isVisible());
        QVERIFY(!sheet.btnAdd->isEnabled());
        sheet.textFieldFocusType->clear();
        QTest::keyClicks(sheet.textFieldFocusType, name);
        QTest::keyClick(sheet.textFieldFocusType, Qt::Key_Return); // the main button's key
        QCOMPARE(sheet.isVisible(), refused);
        QCOMPARE(sheet.lblError->isVisible(), refused);
        if (refused)
            return;
        const int row = editRow < 0 ? 1 : editRow; // added just before the built-in types' end
        QCOMPARE(s.list.name(editRow < 0 ? s.list.count() - 2 : row), name);
        QCOMPARE(s.list.count(), editRow < 0 ? 4 : 3);
        QVERIFY(s.list.isDefault(s.list.count() - 1));
    }

    void urlSheetRules_data()
    {
        QTest::addColumn<bool>("focusList");
        QTest::addColumn<int>("editRow"); // -1: adding
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("refused");
        QTest::newRow("only stars, focus list") << true << -1 << u"***"_s << true;
        QTest::newRow("only stars, blocked list") << false << -1 << u"***"_s << true;
        QTest::newRow("a star with more") << false << -1 << u"*.example.com"_s << false;
        QTest::newRow("duplicate ignoring case") << false << -1 << u"Example.ORG"_s << true;
        QTest::newRow("editing without a change") << false << 0 << u"example.org"_s << false;
        QTest::newRow("blanks pass") << true << -1 << u"   "_s << false;
    }

    void urlSheetRules()
    {
        QFETCH(bool, focusList);
        QFETCH(int, editRow);
        QFETCH(QString, typed);
        QFETCH(bool, refused);
        Screens s;
        blockedUrlsVc blockedTab(s.ctx);
        addWebUrlVc* sheet = s.tab.addWebUrlVcObj;
        if (focusList) {
            s.tab.selectRow(0);
            s.tab.radioBtnAllowSelectedUrls->click();
            s.tab.btnAddUrl->click();
        } else {
            sheet = blockedTab.addWebUrlVcObj;
            blockedTab.show();
            if (editRow < 0)
                blockedTab.btnAddUrl->click();
            else
                blockedTab.tableRowAllowedUrlsDoubleClicked(editRow);
        }
        QVERIFY(sheet->isVisible());
        sheet->textField->clear();
        QTest::keyClicks(sheet->textField, typed);
        sheet->btnAdd->click();
        QCOMPARE(sheet->lblInvalidDomain->isVisible(), refused);
        if (refused)
            return;
        const QStringList entries = focusList ? s.list.urlsArray(0) : s.blocked;
        QVERIFY(entries.contains(typed));
        QCOMPARE(s.preferences.stringList(u"kUserdefaultsArrBlockedUrls"_s).has_value(), !focusList);
    }

    void switchLeadsToTheDialogsOfTheBlock_data()
    {
        QTest::addColumn<int>("runningRow"); // -1: no block
        QTest::addColumn<bool>("sheetUp");
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<bool>("checked");
        QTest::newRow("turned on") << -1 << false << u"start 0 Work"_s << false;
        QTest::newRow("turned on under the discouraging sheet") << -1 << true << QString() << false;
        QTest::newRow("turned on while another runs")
            << 1 << false
            << u"A focus mode is already running. Please abort the running focus mode to start a new one.|"_s
            << false;
        QTest::newRow("turned off") << 0 << false << u"abort"_s << true;
    }

    void switchLeadsToTheDialogsOfTheBlock()
    {
        QFETCH(int, runningRow);
        QFETCH(bool, sheetUp);
        QFETCH(QString, outcome);
        QFETCH(bool, checked);
        Screens s;
        QStringList calls;
        s.tab.showStartingFocusMode = [&](int row, const QString& name) {
            calls << u"start %1 %2"_s.arg(row).arg(name);
        };
        s.tab.showAbortingFocusModeVc = [&] { calls << u"abort"_s; };
        s.tab.isDiscourageSheetShown = [&] { return sheetUp; };
        s.list.setOn(runningRow, true);
        s.tab.selectRow(0);
        s.tab.reloadData();
        QVERIFY(s.tab.toggleButton->isEnabled());
        s.tab.toggleButton->click();
        QCOMPARE((calls + s.alerts).join(u';'), outcome);
        QCOMPARE(s.tab.toggleButton->isChecked(), checked);
    }

    void applicationsComeFromTheDesktop()
    {
        Screens s;
        s.workspace.installed = {
            {u"firefox"_s, u"Firefox"_s, u"/usr/share/applications/firefox.desktop"_s, u"firefox"_s},
            {u"gimp"_s, u"GNU Image Manipulation Program"_s, u"/usr/share/applications/gimp.desktop"_s, {}},
            {u"xterm"_s, u"XTerm"_s, u"/usr/share/applications/xterm.desktop"_s, {}}};
        s.tab.selectRow(0);
        s.tab.radioBtnAllowSelectedApps->click();
        s.tab.btnAddApp->click();
        addApplicationVc& chooser = *s.tab.addApplicationVcObj;
        QCOMPARE(chooser.tblViewApplications->count(), 3);
        chooser.tblViewApplications->item(1)->setSelected(true);
        QTest::keyClick(chooser.textFieldSearch, Qt::Key_Return);
        QCOMPARE(s.list.appsArray(0), QStringList{u"/usr/share/applications/gimp.desktop"_s});
        QCOMPARE(s.tab.tblViewAllowedApps->item(0)->text(), u"GNU Image Manipulation Program"_s);

        // The same entry from another folder, through the file chooser, is refused; the
        // rest of the choice is taken.
        s.tab.btnAddApp->click();
        chooser.chooseDesktopFiles = [] {
            return QStringList{u"/home/me/.local/share/applications/GIMP.desktop"_s,
                               u"/usr/share/applications/xterm.desktop"_s};
        };
        chooser.btnOtherFile->click();
        QCOMPARE(s.alerts, QStringList{u"Some of the apps selected are already present in the list.|"_s});
        QCOMPARE(s.list.appsArray(0), (QStringList{u"/usr/share/applications/gimp.desktop"_s,
                                                   u"/usr/share/applications/xterm.desktop"_s}));
    }

    void everyControlIsReachableAndNamedAsItReads()
    {
        Screens s;
        s.tab.showStartingFocusMode = [](int, const QString&) {};
        s.tab.showAbortingFocusModeVc = [] {};
        s.tab.selectRow(0);
        s.tab.radioBtnAllowSelectedApps->click();
        s.tab.radioBtnAllowSelectedUrls->click();
        s.list.addUrl(0, u"example.org"_s);
        s.tab.reloadData();
        s.tab.tblViewAllowedUrls->setCurrentRow(0);

        QSet<QWidget*> chain;
        for (QWidget* w = s.tab.nextInFocusChain(); w != &s.tab; w = w->nextInFocusChain())
            chain.insert(w);
        for (QWidget* w : s.tab.findChildren<QWidget*>()) {
            if (w->isVisible() && w->isEnabled() && (w->focusPolicy() & Qt::TabFocus))
                QVERIFY2(chain.contains(w), qPrintable(w->objectName()));
            if (auto* b = qobject_cast<QAbstractButton*>(w))
                QCOMPARE(b->accessibleName(), b->text());
        }
        for (QListWidget* list : s.tab.findChildren<QListWidget*>()) {
            if (list->window() != &s.tab)
                continue; // the sheets' lists are named when they open
            QVERIFY(!list->accessibleName().isEmpty());
            for (int i = 0; i < list->count(); ++i)
                QCOMPARE(list->item(i)->data(Qt::AccessibleTextRole).toString(), list->item(i)->text());
        }
    }
};

QTEST_MAIN(FocusTypesTest)
#include "tst_focustypes.moc"
