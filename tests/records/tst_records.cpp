#include "FakePorts.h"
#include "FocusSummary.h"
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

    // Whatever the texts hold (a comma, a line break), they go in as typed between the
    // fixed fields, below the one header that a later start leaves alone.
    void rowsAreJoinedWithoutQuoting()
    {
        const QString path = dir->filePath(u"vlmrStats.csv"_s);
        UsageLog log(clock, path);
        QVERIFY(log.createIfMissing());
        QVERIFY(log.addEntryInCsv({.logType = u"morning routine"_s,
                                   .activity = u"Tea, green"_s,
                                   .durationInSeconds = u"30"_s,
                                   .startTime = u"2026-03-14 07:29:40"_s,
                                   .feedback = u"too\nhard"_s}));
        QVERIFY(log.createIfMissing());
        QCOMPARE(
            read(path),
            QByteArray(UsageLog::kHeader) +
                "morning routine,2026-03-14 07:30:12,Tea, green,30,,,2026-03-14 07:29:40,,,,too\nhard\n");
    }

    void failedWriteKeepsTheOldFile()
    {
        // A log that vanished is not recreated by a row: the row is lost, nothing else.
        UsageLog missing(clock, dir->filePath(u"gone.csv"_s));
        QVERIFY(!missing.addEntryInCsv({.logType = u"break"_s}));
        QVERIFY(!QFile::exists(missing.path()));

        // A log we may not write to stays as it was.
        if (getuid() == 0)
            QSKIP("root writes anywhere");
        const QString path = dir->filePath(u"vlmrStats.csv"_s);
        UsageLog log(clock, path);
        log.createIfMissing();
        QFile::setPermissions(path, QFile::ReadOwner);
        QVERIFY(!log.addEntryInCsv({.logType = u"break"_s}));
        QCOMPARE(read(path), QByteArray(UsageLog::kHeader));
    }

    // A kill in the middle of a row leaves it without its newline: the readers do not count
    // it, and the next row takes its place.
    void tornLastRowIsSetAside()
    {
        const QString path = dir->filePath(u"vlmrStats.csv"_s);
        const QByteArray block = "focus block,2026-03-14 07:20:00,Work,1500,,,2026-03-14 06:55:00,a,b,,\n";
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(UsageLog::kHeader + block + block.chopped(3)));
        file.close();
        QCOMPARE(readCsv(path, clock.now().addDays(-1)).arrFocusSummaryDic.size(), 1);
        QVERIFY(UsageLog(clock, path).addEntryInCsv({.logType = u"break"_s}));
        QCOMPARE(read(path), UsageLog::kHeader + block + "break,2026-03-14 07:30:12,,,,,,,,,\n");
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
