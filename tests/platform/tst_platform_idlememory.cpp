#include "IdleMemory.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {
qint64 residentFileKb()
{
    QFile status(u"/proc/self/status"_s);
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
        QFile file(dir.filePath(u"pages"_s));
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
        QVERIFY2(touched - before > 12'000, qPrintable(u"%1 -> %2"_s.arg(before).arg(touched)));
        velmora::releaseIdleMemory();
        QVERIFY2(residentFileKb() < touched - 12'000, qPrintable(QString::number(residentFileKb())));
    }
};

QTEST_GUILESS_MAIN(TestIdleMemory)
#include "tst_platform_idlememory.moc"
