#include "DebugLog.h"
#include "FakePorts.h"
#include "UsageLog.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

class RecordsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { dir = std::make_unique<QTemporaryDir>(); }

    void rowsAreJoinedWithoutQuoting_data()
    {
        QTest::addColumn<QString>("activity");
        QTest::addColumn<QString>("feedback");
        QTest::addColumn<QByteArray>("line");
        // Whatever the texts hold, they go in as typed between the fixed fields, below the
        // one header that a later start leaves alone.
        const auto row = [](const char* name, const char* activity, const char* feedback) {
            QTest::newRow(name) << activity << feedback
                                << "morning routine,2026-03-14 07:30:12," + QByteArray(activity) +
                                       ",30,,,2026-03-14 07:29:40,,,," + feedback + '\n';
        };
        row("comma in a name shifts the row", "Tea, green", "");
        row("line break in feedback splits it", "Water", "too\nhard");
        row("quotes stay as typed", "\"Water\"", "");
    }

    void rowsAreJoinedWithoutQuoting()
    {
        QFETCH(QString, activity);
        QFETCH(QString, feedback);
        QFETCH(QByteArray, line);
        const QString path = dir->filePath(u"vlmrStats.csv"_s);
        UsageLog log(clock, path);
        QVERIFY(log.createIfMissing());
        QVERIFY(log.addEntryInCsv({.logType = u"morning routine"_s,
                                   .activity = activity,
                                   .durationInSeconds = u"30"_s,
                                   .startTime = u"2026-03-14 07:29:40"_s,
                                   .feedback = feedback}));
        QVERIFY(log.createIfMissing());
        QCOMPARE(read(path), QByteArray(UsageLog::kHeader) + line);
    }

    void failedWriteKeepsTheOldFile()
    {
        // A log that vanished is not recreated by a row: the row is lost, nothing else.
        UsageLog missing(clock, dir->filePath(u"gone.csv"_s));
        QVERIFY(!missing.addEntryInCsv({.logType = u"break"_s}));
        QVERIFY(!QFile::exists(missing.path()));

        // A folder we may not write to: the rewrite fails and the file stays as it was.
        if (getuid() == 0)
            QSKIP("root writes anywhere");
        const QString path = dir->filePath(u"vlmrStats.csv"_s);
        UsageLog log(clock, path);
        log.createIfMissing();
        QFile::setPermissions(dir->path(), QFile::ReadOwner | QFile::ExeOwner);
        QVERIFY(!log.addEntryInCsv({.logType = u"break"_s}));
        QFile::setPermissions(dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(read(path), QByteArray(UsageLog::kHeader));
    }

    void debugLogMakesItsFileAndNeverTruncates()
    {
        const QString path = dir->filePath(u"Debug_Logs.txt"_s);
        DebugLog(clock, path).addLog(u"first"_s);
        clock.set(clock.now().addSecs(1));
        // A second run continues the file; a text with a line break goes in as it is.
        DebugLog(clock, path).addLog(u"two\nlines"_s);
        QCOMPARE(read(path),
                 QByteArray("2026-03-14 07:30:12  -  first\n2026-03-14 07:30:13  -  two\nlines\n"));
        // The file may be moved away while we run: the next line makes it anew.
        QVERIFY(QFile::remove(path));
        DebugLog(clock, path).addLog(u"again"_s);
        QCOMPARE(read(path), QByteArray("2026-03-14 07:30:13  -  again\n"));
    }

private:
    static QByteArray read(const QString& path)
    {
        QFile f(path);
        f.open(QIODevice::ReadOnly);
        return f.readAll();
    }
    std::unique_ptr<QTemporaryDir> dir;
    FakeClock clock{QDateTime(QDate(2026, 3, 14), QTime(7, 30, 12))};
};

QTEST_GUILESS_MAIN(RecordsTest)
#include "tst_records.moc"
