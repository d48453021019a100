#include "SettingsPreferences.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::SettingsPreferences;

namespace {

enum class Reader
{
    Boolean,
    String,
    Date,
    StringList,
    MapList
};

QVariant read(const velmora::Preferences& preferences, Reader reader)
{
    const QString key = u"key"_s;
    const auto wrap = [](const auto& answer) { return answer ? QVariant::fromValue(*answer) : QVariant(); };
    switch (reader) {
    case Reader::Boolean:
        return wrap(preferences.boolean(key));
    case Reader::String:
        return wrap(preferences.string(key));
    case Reader::Date:
        return wrap(preferences.date(key));
    case Reader::StringList:
        return wrap(preferences.stringList(key));
    case Reader::MapList:
        return wrap(preferences.mapList(key));
    }
    return {};
}

void same(const char* name, const QVariant& value, Reader reader)
{
    QTest::newRow(name) << value << reader << value;
}

void absent(const char* name, const QVariant& value, Reader reader)
{
    QTest::newRow(name) << value << reader << QVariant();
}

} // namespace

class TestPreferences : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_files = 0;

    // QSettings caches every file it has read for the whole process, so a second
    // instance on the same path would not parse it again. A copy is read from disk,
    // as the next run of the program reads it.
    QString writtenCopy(const std::function<void(SettingsPreferences&)>& write)
    {
        const QString path = m_dir.filePath(u"%1.conf"_s.arg(++m_files));
        {
            SettingsPreferences preferences(path);
            write(preferences);
        }
        return QFile::copy(path, path + u".copy"_s) ? path + u".copy"_s : QString();
    }

private Q_SLOTS:
    // Written by this program, or by an older one or by hand: a typed reader gives
    // back what was stored, or "absent" for the wrong type, never a guess.
    void roundTripThroughTheFile_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<Reader>("reader");
        QTest::addColumn<QVariant>("expected");

        const QDateTime offset(QDate(2026, 11, 23), QTime(7, 0), Qt::OffsetFromUTC, 5 * 3600 + 1800);
        const QVariantMap session{{u"name"_s, u"Deep work, \"no\" mail"_s},
                                  {u"until"_s, offset},
                                  {u"apps"_s, QStringList{u"firefox"_s, u"zoom"_s}},
                                  {u"strict"_s, true}};
        const QVariantMap other{{u"name"_s, u"📞 calls"_s}, {u"minutes"_s, 25}};

        // Plain booleans, texts, local dates and lists of maps go through the
        // integration tests' preferences tool and the program on every run.
        same("empty string", u""_s, Reader::String);
        same("date with offset", offset, Reader::Date);
        same("string list", QStringList{u"a, b"_s, u"@c"_s, QString(), u"\"d\""_s}, Reader::StringList);
        same("one-element list", QStringList{u"x, y"_s}, Reader::StringList);
        same("empty string list", QStringList(), Reader::StringList);
        same("a date with offset in a map", QVariantList{other, session}, Reader::MapList);
        same("empty map list", QVariantList(), Reader::MapList);

        const QVariantMap map{{u"name"_s, u"x"_s}};
        absent("yes, as bool", u"yes"_s, Reader::Boolean);
        absent("date, as string", QDateTime(QDate(2026, 1, 1), QTime(8, 0)), Reader::String);
        absent("text, as date", u"2026-01-01T08:00:00"_s, Reader::Date);
        absent("strings, as map list", QStringList{u"a"_s, u"b"_s}, Reader::MapList);
        absent("maps, as string list", QVariantList{map, map}, Reader::StringList);
        absent("map and string, as map list", QVariantList{map, u"x"_s}, Reader::MapList);
        absent("map, as map list", map, Reader::MapList);
    }

    void roundTripThroughTheFile()
    {
        QFETCH(QVariant, value);
        QFETCH(Reader, reader);
        QFETCH(QVariant, expected);

        const QString copy = writtenCopy([&](SettingsPreferences& preferences) {
            preferences.setValue(u"other"_s, 1);
            if (value.isValid())
                preferences.setValue(u"key"_s, value);
        });
        QVERIFY(!copy.isEmpty());
        QCOMPARE(read(SettingsPreferences(copy), reader), expected);
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_platform_preferences.moc"
