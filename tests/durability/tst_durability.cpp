#include "DebugLog.h"
#include "FakePorts.h"
#include "FocusSummary.h"
#include "PreferenceKeys.h"
#include "RecordFormats.h"
#include "SettingsLoader.h"
#include "SettingsPreferences.h"
#include "SyncTimestamps.h"
#include "UsageLog.h"

#include <cstdio>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;
using namespace Qt::StringLiterals;

// Kills a writer of each of the program's files at random moments, then starts
// the readers from what it left: the old or the new contents, never a torn file.
// The writer is this program again ("--write"), so both sides know the contents.

namespace {

const QDateTime kTimes[2] = {QDateTime(QDate(2026, 11, 23), QTime(7, 30)),
                             QDateTime(QDate(2026, 11, 24), QTime(7, 45))};

// A focus-block row that the summary counts; the activity numbers the rows.
UsageRow usageRow(int n)
{
    return {u"focus block"_s,         u"row %1"_s.arg(n), u"1500"_s, {}, {},
            u"2026-11-23 07:00:00"_s, u"wrote tests"_s};
}

// Some 3 KB; the variants differ in their number of habits.
QString settingsDocument(int variant)
{
    QStringList habits;
    for (int i = 0; i < 30 + variant; ++i)
        habits << uR"({"name": "Habit %1", "durationSeconds": 60, "videoUrl": ["https://example.org/%1"]})"_s
                      .arg(i);
    return u"{\"morningHabits\": [\n%1\n]}\n"_s.arg(habits.join(u",\n"_s));
}

// Writes one file through the program's own code, alternating between two
// contents, and prints the number of each finished write. It ends with the kill,
// or with SIGPIPE once the test is gone.
int writeForever(const QString& kind, const QDir& folder, int first)
{
    test::FakeClock clock(kTimes[0]);
    SettingsPreferences preferences(folder.filePath(u"velmora.conf"_s));
    const SyncTimestamps timestamps(preferences, clock);
    const UsageLog log(clock, folder.filePath(u"vlmrStats.csv"_s));
    if (kind == u"log")
        log.createIfMissing();
    for (int i = first;; ++i) {
        if (kind == u"log") {
            log.addEntryInCsv(usageRow(i));
        } else if (kind == u"plist") {
            clock.set(kTimes[i % 2]);
            timestamps.writeMorningRoutineDate();
            timestamps.writeEveningRoutineDate();
        } else {
            // The settings document is kept among the preferences.
            preferences.setValue(keys::kUserdefaultsFirstRunDate, kTimes[i % 2]);
            preferences.setValue(keys::kUserdefaultsSelectedJson, settingsDocument(i % 2));
            preferences.sync();
        }
        std::printf("%d\n", i);
        std::fflush(stdout);
    }
}

// Reads the file as the program does when it starts.
void checkStart(const QString& kind, const QDir& folder, int lastWritten, int& rows)
{
    const SettingsPreferences preferences(folder.filePath(u"velmora.conf"_s));
    const test::FakeClock clock;
    if (kind == u"log") {
        // The header and every row up to the one being written, byte for byte; of
        // that one at most a start without its newline, which the next writer replaces.
        QFile file(folder.filePath(u"vlmrStats.csv"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray written = file.readAll();
        const QByteArray bytes = written.left(written.lastIndexOf('\n') + 1);
        rows = int(bytes.count('\n')) - 1;
        QVERIFY2(rows > lastWritten, "a written row is lost");
        QByteArray expected(UsageLog::kHeader);
        for (int i = 0; i <= rows; ++i)
            expected += UsageLog::formatRow(formatRecordDate(kTimes[0]), usageRow(i)).toUtf8();
        QVERIFY(expected.startsWith(written));
        QCOMPARE(readCsv(file.fileName(), kTimes[0].addDays(-1)).arrFocusSummaryDic.size(), rows);
    } else if (kind == u"preferences") {
        // All keys from the same write, and the loader builds the morning from it.
        const QString saved = preferences.string(keys::kUserdefaultsSelectedJson).value_or(QString());
        const int variant = saved == settingsDocument(1) ? 1 : 0;
        QCOMPARE(saved, settingsDocument(variant));
        QVERIFY(preferences.date(keys::kUserdefaultsFirstRunDate) == kTimes[variant]);
        RunState state;
        readSettingsJsonDictionary(state, preferences, {}, DebugLog(clock, {}));
        QCOMPARE(state.arrAllMorningHabits.size(), 30 + variant);
    } else {
        const SyncTimestamps timestamps(preferences, clock);
        for (const auto& date : {timestamps.getMorningRoutineDate(), timestamps.getEveningRoutineDate()})
            QVERIFY(date == kTimes[0] || date == kTimes[1]);
    }
}

} // namespace

class tst_durability : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killedWriterLeavesOldOrNew_data();
    void killedWriterLeavesOldOrNew();
};

void tst_durability::killedWriterLeavesOldOrNew_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"log", "preferences", "plist"})
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

void tst_durability::killedWriterLeavesOldOrNew()
{
    QFETCH(QString, kind);
    const quint32 seed = qEnvironmentVariable("DURABILITY_SEED", u"20261123"_s).toUInt();
    qInfo("200 kills, seed %u (DURABILITY_SEED replays the counts)", seed);
    QRandomGenerator random(seed);
    QTemporaryDir temporary;
    const QDir folder(temporary.path());
    SettingsPreferences(folder.filePath(u"velmora.conf"_s))
        .setValue(keys::kUserdefaultsSelectedFolder, folder.path());
    // What a writer killed between making its lock file and filling it leaves.
    QFile(folder.filePath(u"velmora.conf.lock"_s)).open(QIODevice::WriteOnly);
    int rows = 0;
    for (int n = 0; n < 200 && !QTest::currentTestFailed(); ++n) {
        // Where writes cost nothing (a tmpfs) thousands of rows land before each
        // kill; a new log now and then keeps every check of the whole file short.
        if (kind == u"log" && rows > 5000 && QFile::remove(folder.filePath(u"vlmrStats.csv"_s)))
            rows = 0;
        QProcess writer;
        writer.start(QCoreApplication::applicationFilePath(),
                     {u"--write"_s, kind, folder.path(), QString::number(kind == u"log" ? rows : n)});
        // The kill lands somewhere in the write that follows the last line read.
        int lastWritten = -1;
        for (int lines = random.bounded(1, 3); lines > 0; --lines) {
            while (!writer.canReadLine())
                QVERIFY2(writer.waitForReadyRead(10000), "the writer does not get on");
            lastWritten = writer.readLine().trimmed().toInt();
        }
        writer.kill();
        QVERIFY(writer.waitForFinished());
        checkStart(kind, folder, lastWritten, rows);
        if (QTest::currentTestFailed())
            qWarning("after kill %d", n);
    }
    qInfo() << "left in the folder:" << folder.entryList(QDir::Files | QDir::Hidden);
}

int main(int argc, char** argv)
{
    if (argc == 5 && qstrcmp(argv[1], "--write") == 0)
        return writeForever(QString::fromLocal8Bit(argv[2]), QDir(QString::fromLocal8Bit(argv[3])),
                            std::atoi(argv[4]));
    QCoreApplication app(argc, argv);
    tst_durability test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_durability.moc"
