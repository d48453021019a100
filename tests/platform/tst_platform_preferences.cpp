#include "SettingsPreferences.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::SettingsPreferences;

namespace {

enum class Reader { Boolean, String, Date, StringList, MapList };

QVariant read(const velmora::Preferences& preferences, Reader reader, const QString& key)
{
    const auto wrap = [](const auto& answer) { return answer ? QVariant::fromValue(*answer) : QVariant(); };
    switch (reader) {
    case Reader::Boolean: return wrap(preferences.boolean(key));
    case Reader::String: return wrap(preferences.string(key));
    case Reader::Date: return wrap(preferences.date(key));
    case Reader::StringList: return wrap(preferences.stringList(key));
    case Reader::MapList: return wrap(preferences.mapList(key));
    }
    return {};
}

} // namespace

class TestPreferences : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_files = 0;

    // QSettings keeps every file it has read in a cache shared by the whole process,
    // so a second instance on the same path never parses the file. The copy is read
    // from disk as another run of the program would read it.
    std::unique_ptr<SettingsPreferences> writtenAndReadBack(const QVariant& value)
    {
        const QString written = m_dir.filePath(u"written%1.conf"_s.arg(++m_files));
        {
            SettingsPreferences preferences(written);
            preferences.setValue(u"key"_s, value);
        }
        const QString copy = written + u".copy"_s;
        if (!QFile::copy(written, copy))
            return nullptr;
        return std::make_unique<SettingsPreferences>(copy);
    }

private Q_SLOTS:
    void roundTrip_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<Reader>("reader");
        QTest::addColumn<QVariant>("expected");

        const QDateTime local(QDate(2026, 3, 29), QTime(1, 59, 59, 250));
        const QDateTime utc(QDate(2026, 11, 23), QTime(6, 59, 50, 1), Qt::UTC);
        const QDateTime offset(QDate(2026, 11, 23), QTime(7, 0), Qt::OffsetFromUTC, 5 * 3600 + 1800);
        const QVariantMap session{{u"name"_s, u"Deep work, \"no\" mail"_s},
                                  {u"until"_s, offset},
                                  {u"apps"_s, QStringList{u"firefox"_s, u"zoom"_s}},
                                  {u"strict"_s, true}};
        const QVariantMap other{{u"name"_s, u"📞 calls"_s}, {u"minutes"_s, 25}};
        const QString json = u"{\"focusTypes\": [{\"name\": \"Work\", \"apps\": [\"a\", \"b\"]}],\n"
                             u"\t\"note\": \"back\\\\slash; = # [x] 🚀 é\"}"_s;

        QTest::newRow("true") << QVariant(true) << Reader::Boolean << QVariant(true);
        QTest::newRow("false") << QVariant(false) << Reader::Boolean << QVariant(false);
        QTest::newRow("word") << QVariant(u"zoom"_s) << Reader::String << QVariant(u"zoom"_s);
        QTest::newRow("empty string") << QVariant(QString()) << Reader::String << QVariant(u""_s);
        QTest::newRow("json text") << QVariant(json) << Reader::String << QVariant(json);
        QTest::newRow("looks like a stored variant")
            << QVariant(u"@Variant(x)"_s) << Reader::String << QVariant(u"@Variant(x)"_s);
        QTest::newRow("outer spaces") << QVariant(u"  padded  "_s) << Reader::String << QVariant(u"  padded  "_s);
        QTest::newRow("local date") << QVariant(local) << Reader::Date << QVariant(local);
        QTest::newRow("utc date") << QVariant(utc) << Reader::Date << QVariant(utc);
        QTest::newRow("date with offset") << QVariant(offset) << Reader::Date << QVariant(offset);

        const QStringList list{u"a, b"_s, u"@c"_s, QString(), u"\"d\""_s};
        QTest::newRow("string list") << QVariant(list) << Reader::StringList << QVariant(list);
        QTest::newRow("one-element list")
            << QVariant(QStringList{u"x, y"_s}) << Reader::StringList << QVariant(QStringList{u"x, y"_s});
        QTest::newRow("empty string list")
            << QVariant(QStringList()) << Reader::StringList << QVariant(QStringList());

        QTest::newRow("one map") << QVariant(QVariantList{session}) << Reader::MapList
                                 << QVariant(QVariantList{session});
        QTest::newRow("two maps") << QVariant(QVariantList{other, session}) << Reader::MapList
                                  << QVariant(QVariantList{other, session});
        QTest::newRow("empty map list") << QVariant(QVariantList()) << Reader::MapList << QVariant(QVariantList());
    }

    void roundTrip()
    {
        QFETCH(QVariant, value);
        QFETCH(Reader, reader);
        QFETCH(QVariant, expected);

        const auto preferences = writtenAndReadBack(value);
        QVERIFY(preferences);
        QVERIFY(preferences->contains(u"key"_s));
        QCOMPARE(read(*preferences, reader, u"key"_s), expected);
    }

    // A file written by an older version or by hand holds the wrong type: the
    // typed reader answers "absent" instead of guessing.
    void wrongTypeIsAbsent_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<Reader>("reader");

        const QVariantMap map{{u"name"_s, u"x"_s}};
        const QDateTime date(QDate(2026, 1, 1), QTime(8, 0));
        QTest::newRow("missing, as bool") << QVariant() << Reader::Boolean;
        QTest::newRow("missing, as string list") << QVariant() << Reader::StringList;
        QTest::newRow("missing, as map list") << QVariant() << Reader::MapList;
        QTest::newRow("yes, as bool") << QVariant(u"yes"_s) << Reader::Boolean;
        QTest::newRow("date, as string") << QVariant(date) << Reader::String;
        QTest::newRow("text, as date") << QVariant(u"2026-01-01T08:00:00"_s) << Reader::Date;
        QTest::newRow("list, as string") << QVariant(QStringList{u"a"_s, u"b"_s}) << Reader::String;
        QTest::newRow("strings, as map list") << QVariant(QStringList{u"a"_s, u"b"_s}) << Reader::MapList;
        QTest::newRow("maps, as string list") << QVariant(QVariantList{map, map}) << Reader::StringList;
        QTest::newRow("map and string, as map list")
            << QVariant(QVariantList{map, u"x"_s}) << Reader::MapList;
        QTest::newRow("map, as map list") << QVariant(map) << Reader::MapList;
    }

    void wrongTypeIsAbsent()
    {
        QFETCH(QVariant, value);
        QFETCH(Reader, reader);

        const auto preferences = value.isValid() ? writtenAndReadBack(value)
                                                 : std::make_unique<SettingsPreferences>(m_dir.filePath(u"none"_s));
        QVERIFY(preferences);
        QCOMPARE(read(*preferences, reader, u"key"_s), QVariant());
    }

    void clearLeavesNothing()
    {
        const QString path = m_dir.filePath(u"cleared.conf"_s);
        {
            SettingsPreferences preferences(path);
            preferences.setValue(u"a"_s, true);
            preferences.setValue(u"group/b"_s, u"x"_s);
            preferences.sync();
            preferences.clear();
            QVERIFY(!preferences.contains(u"a"_s));
        }
        QVERIFY(QFile::copy(path, path + u".copy"_s));
        const SettingsPreferences reread(path + u".copy"_s);
        QVERIFY(!reread.contains(u"a"_s));
        QVERIFY(!reread.contains(u"group/b"_s));
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_platform_preferences.moc"
