#include "DebugLog.h"
#include "FakePorts.h"
#include "FocusSummary.h"
#include "RecordFormats.h"
#include "Samples.h"
#include "SettingsLoader.h"
#include "SettingsPreferences.h"
#include "SyncTimestamps.h"

#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;

// Kills a writer of each of the program's files at random moments, then starts
// the readers from what it left: old or new contents, never a torn file.
class tst_durability : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killedWriterLeavesOldOrNew_data();
    void killedWriterLeavesOldOrNew();

private:
    void checkLog(const QDir& folder, int lastWritten, int& rows);
    void checkPreferences(const QDir& folder);
    void checkSettings(const QDir& folder);
    void checkPlist(const QDir& folder);
};

void tst_durability::killedWriterLeavesOldOrNew_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"log", "preferences", "settings", "plist"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void tst_durability::killedWriterLeavesOldOrNew()
{
    QFETCH(QString, kind);
    const int kills = qEnvironmentVariableIsSet("DURABILITY_KILLS") ? qEnvironmentVariableIntValue("DURABILITY_KILLS") : 200;
    const quint32 seed = qEnvironmentVariableIsSet("DURABILITY_SEED")
                             ? quint32(qEnvironmentVariableIntValue("DURABILITY_SEED"))
                             : 20261123u;
    qInfo("%d kills, seed %u (DURABILITY_SEED replays the counts)", kills, seed);
    QRandomGenerator random(seed);
    QTemporaryDir temporary;
    const QDir folder(temporary.path());
    int rows = 0;
    for (int n = 0; n < kills; ++n) {
        QProcess writer;
        writer.start(QStringLiteral(VELMORA_DURABILITY_WRITER),
                     {kind, folder.path(), QString::number(kind == u"log" ? rows : n)});
        QVERIFY(writer.waitForStarted());
        // The kill lands somewhere inside the write after the last line read.
        int lastWritten = -1;
        for (int lines = random.bounded(1, 6); lines > 0;) {
            QVERIFY2(writer.canReadLine() || writer.waitForReadyRead(10000), "the writer does not get on");
            for (; lines > 0 && writer.canReadLine(); --lines)
                lastWritten = writer.readLine().trimmed().toInt();
        }
        writer.kill();
        QVERIFY(writer.waitForFinished());
        if (kind == u"log")
            checkLog(folder, lastWritten, rows);
        else if (kind == u"preferences")
            checkPreferences(folder);
        else if (kind == u"settings")
            checkSettings(folder);
        else
            checkPlist(folder);
        if (QTest::currentTestFailed())
            return qWarning("after kill %d", n);
    }
    qInfo() << "left in the folder:" << folder.entryList(QDir::Files | QDir::Hidden);
}

// The header and every row up to the one being written, byte for byte; the
// summary of the day reads them all.
void tst_durability::checkLog(const QDir& folder, int lastWritten, int& rows)
{
    const QString path = folder.filePath(QStringLiteral("vlmrStats.csv"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    rows = int(bytes.count('\n')) - 1;
    QVERIFY2(rows > lastWritten, "a written row is lost");
    QByteArray expected(UsageLog::kHeader);
    for (int i = 0; i < rows; ++i)
        expected += UsageLog::formatRow(formatRecordDate(durability::kTimes[0]), durability::usageRow(i)).toUtf8();
    QCOMPARE(bytes, expected);
    const FocusSummaryData summary = readCsv(path, durability::kTimes[0].addDays(-1));
    QCOMPARE(summary.arrFocusSummaryDic.size(), rows);
}

static QVariantList storedPreferences(const Preferences& preferences)
{
    using namespace durability;
    auto orNull = [](const auto& optional) { return optional ? QVariant::fromValue(*optional) : QVariant(); };
    return {orNull(preferences.boolean(kPreferenceKeys[0])), orNull(preferences.date(kPreferenceKeys[1])),
            orNull(preferences.stringList(kPreferenceKeys[2])), orNull(preferences.mapList(kPreferenceKeys[3]))};
}

void tst_durability::checkPreferences(const QDir& folder)
{
    const SettingsPreferences preferences(folder.filePath(QStringLiteral("velmora.conf")));
    const QVariantList stored = storedPreferences(preferences);
    QVERIFY2(stored == durability::preferenceValues(0) || stored == durability::preferenceValues(1),
             qPrintable(QDebug::toString(stored)));
}

// The saved document is one of the two, and the loader builds the morning from it.
void tst_durability::checkSettings(const QDir& folder)
{
    const SettingsPreferences preferences(folder.filePath(QStringLiteral("velmora.conf")));
    const QString saved = preferences.string(keys::kUserdefaultsSelectedJson).value_or(QString());
    const int variant = saved == durability::settingsDocument(1) ? 1 : 0;
    QCOMPARE(saved, durability::settingsDocument(variant));
    RunState state;
    test::FakeClock clock;
    readSettingsJsonDictionary(state, preferences, {}, DebugLog(clock, {}));
    QCOMPARE(state.arrAllMorningHabits.size(), 30 + variant);
}

void tst_durability::checkPlist(const QDir& folder)
{
    test::MemoryPreferences preferences;
    preferences.setValue(keys::kUserdefaultsSelectedFolder, folder.path());
    test::FakeClock clock;
    const SyncTimestamps timestamps(preferences, clock);
    for (const auto& date : {timestamps.getMorningRoutineDate(), timestamps.getEveningRoutineDate()})
        QVERIFY(date == durability::kTimes[0] || date == durability::kTimes[1]);
}

QTEST_GUILESS_MAIN(tst_durability)
#include "tst_durability.moc"
