#include "IdleMemory.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
qint64 residentFileKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    status.open(QIODevice::ReadOnly);
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("RssFile:"))
            return line.mid(8).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}
} // namespace

class TestIdleMemory : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // Pages that only an earlier moment touched leave the process's resident set.
    void touchedFilePagesAreHandedBack()
    {
        QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("pages")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(16 << 20, 'x'));
        file.close();
        QVERIFY(file.open(QIODevice::ReadOnly)); // mapped read-only, as library code is
        const uchar* pages = file.map(0, file.size());
        QVERIFY(pages);
        const qint64 before = residentFileKb();
        int sum = 0;
        for (qint64 at = 0; at < file.size(); at += 4096)
            sum += pages[at];
        QVERIFY(sum > 0);
        const qint64 touched = residentFileKb();
        QVERIFY2(touched - before > 12'000, qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(touched)));
        velmora::releaseIdleMemory();
        QVERIFY2(residentFileKb() < touched - 12'000, qPrintable(QString::number(residentFileKb())));
    }
};

QTEST_GUILESS_MAIN(TestIdleMemory)
#include "tst_platform_idlememory.moc"
