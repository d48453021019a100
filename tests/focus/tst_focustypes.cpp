#include "DebugLog.h"
#include "FakePorts.h"
#include "FocusTypeList.h"
#include "PreferenceKeys.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;
using namespace velmora::test;
using namespace Qt::StringLiterals;
namespace key = focus::key;

namespace {

QVariantMap userType(const QString& name, QVariantMap extra = {})
{
    QVariantMap type = focus::makeUserType(name, QStringLiteral("3D8B6E"));
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

class FocusTypesTest : public QObject
{
    Q_OBJECT

    QString logText() const
    {
        QFile f(log->path());
        f.open(QIODevice::ReadOnly);
        return QString::fromUtf8(f.readAll());
    }
    FocusTypeList& load(const QVariant& stored)
    {
        preferences.setValue(keys::kUserdefaultsArrFocusTypes, stored);
        list = std::make_unique<FocusTypeList>(types, preferences, *log);
        list->load();
        return *list;
    }

    std::unique_ptr<QTemporaryDir> dir;
    FakeClock clock;
    MemoryPreferences preferences;
    std::unique_ptr<DebugLog> log;
    QVariantList types;
    std::unique_ptr<FocusTypeList> list;

private Q_SLOTS:
    void init()
    {
        dir = std::make_unique<QTemporaryDir>();
        log = std::make_unique<DebugLog>(clock, dir->filePath(QStringLiteral("debug.txt")));
        preferences.clear();
        types.clear();
    }

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
        row("default moved last and renamed, meetings inserted, isOn cleared", QVariantList{oldDefault, work},
            QStringList{u"Work"_s} + builtIns);
        row("nothing stored", QVariant(), builtIns);
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

        const FocusTypeList& types = load(stored);
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
        QCOMPARE(preferences.mapList(keys::kUserdefaultsArrFocusTypes)->size(), types.count());
        if (logged.isEmpty())
            QVERIFY(logText().isEmpty());
        else
            QVERIFY2(logText().contains(logged), qPrintable(logText()));
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
        FocusTypeList& types = load(QVariantList{userType(u"Work"_s), userType(u"Work 1"_s)});
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

    void colourStrings_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("reads");
        QTest::newRow("as written") << u"D0963C"_s << u"D0963C"_s;
        QTest::newRow("with #, lower case") << u"#d0963c"_s << u"D0963C"_s;
        QTest::newRow("short number") << u"12"_s << u"000012"_s;
        QTest::newRow("stops at the first non-digit") << u"12G4"_s << u"000012"_s;
        QTest::newRow("not a number") << u"red"_s << u"000000"_s;
        QTest::newRow("empty") << QString() << u"000000"_s;
        QTest::newRow("too long") << u"FFFFFFFFFFFF"_s << u"FFFFFF"_s;
    }

    void colourStrings()
    {
        QFETCH(QString, stored);
        QFETCH(QString, reads);
        QCOMPARE(focus::getColorString(focus::colorFromString(stored)), reads);
    }

    void sameApplicationFromTwoFoldersIsOneEntry()
    {
        FocusTypeList& types = load(QVariantList{userType(u"Work"_s)});
        QVERIFY(!types.addApps(0, {u"/usr/share/applications/firefox.desktop"_s}));
        QVERIFY(types.addApps(0, {u"/home/u/.local/share/applications/Firefox.desktop"_s,
                                  u"/usr/share/applications/gimp.desktop"_s}));
        QCOMPARE(types.appsArray(0), (QStringList{u"/usr/share/applications/firefox.desktop"_s,
                                                  u"/usr/share/applications/gimp.desktop"_s}));
    }

    void blockersReadTheRulesOfTheTypeThatIsOn()
    {
        FocusTypeList& types = load(QVariantList{userType(u"Work"_s)});
        types.setAllowedAllApps(0, false);
        types.addApps(0, {u"/usr/share/applications/gimp.desktop"_s});
        types.fillAllowAppArray();
        QVERIFY(types.allowAppsPath().isEmpty()); // nothing is on

        types.setOn(0, true);
        types.fillAllowAppArray();
        types.fillAllowUrlArray();
        QVERIFY(!types.isAllowedAllAppsInFocus());
        QCOMPARE(types.allowAppsPath(), QStringList{u"/usr/share/applications/gimp.desktop"_s});
        QVERIFY(types.isAllowedAllUrlsInFocus());

        // A change to the running type's rules reaches the blockers at once.
        QSignalSpy urls(&types, &FocusTypeList::allowUrlsChanged);
        types.setAllowedAllUrls(0, false);
        types.addUrl(0, u"example.org"_s);
        QCOMPARE(urls.count(), 2);
        QVERIFY(!types.isAllowedAllUrlsInFocus());
        QCOMPARE(types.allowUrl(), QStringList{u"example.org"_s});
    }
};

QTEST_GUILESS_MAIN(FocusTypesTest)
#include "tst_focustypes.moc"
