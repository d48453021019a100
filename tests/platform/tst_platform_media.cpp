#include "PulseMediaMonitor.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::PulseMediaMonitor;

class TestMedia : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // One process in a made-up process table, next to an ordinary one.
    void camera_data()
    {
        QTest::addColumn<QString>("pid"); // "own": this test's process
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("openFiles");
        QTest::addColumn<bool>("expected");

        const QStringList camera{u"/dev/null"_s, u"/dev/video0"_s};
        QTest::newRow("another program's camera") << u"4242"_s << u"zoom"_s << camera << true;
        QTest::newRow("our own camera") << u"own"_s << u"velmora"_s << camera << false;
        QTest::newRow("held by pipewire") << u"77"_s << u"pipewire"_s << camera << false;
        QTest::newRow("no video device")
            << u"4242"_s << u"zoom"_s << QStringList{u"/dev/snd/pcmC0D0c"_s, u"socket:[8812]"_s} << false;
        QTest::newRow("no file table readable") << u"4242"_s << u"zoom"_s << QStringList() << false;
    }

    void camera()
    {
        QFETCH(QString, pid);
        QFETCH(QString, name);
        QFETCH(QStringList, openFiles);
        QFETCH(bool, expected);

        QTemporaryDir proc;
        QDir root(proc.path());
        QVERIFY(root.mkpath(u"1/fd"_s));
        QVERIFY(QFile::link(u"/dev/null"_s, proc.filePath(u"1/fd/0"_s)));
        if (pid == u"own")
            pid = QString::number(QCoreApplication::applicationPid());
        QVERIFY(root.mkpath(pid));
        QFile comm(proc.filePath(pid + u"/comm"_s));
        QVERIFY(comm.open(QIODevice::WriteOnly));
        comm.write(name.toUtf8() + '\n');
        comm.close();
        if (!openFiles.isEmpty())
            QVERIFY(root.mkpath(pid + u"/fd"_s));
        for (int fd = 0; fd < openFiles.size(); ++fd)
            QVERIFY(QFile::link(openFiles[fd], proc.filePath(u"%1/fd/%2"_s.arg(pid).arg(fd + 3))));

        QCOMPARE(PulseMediaMonitor(proc.path()).isACameraOn(), expected);
    }

    // Without a server the answer is at once; a server that accepts and then says
    // nothing costs one bounded wait, and is not asked again right away.
    void micWithoutAnAnsweringServerIsOff_data()
    {
        QTest::addColumn<bool>("listening");
        QTest::newRow("no server") << false;
        QTest::newRow("silent server") << true;
    }

    void micWithoutAnAnsweringServerIsOff()
    {
        QFETCH(bool, listening);
        QTemporaryDir dir;
        QLocalServer silent;
        QVERIFY(!listening || silent.listen(dir.filePath(u"native"_s)));
        qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(dir.filePath(u"native"_s)));
        PulseMediaMonitor monitor;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!monitor.isMicOn());
        const qint64 first = clock.restart();
        QVERIFY2(listening ? first >= 900 && first < 2000 : first < 500, qPrintable(QString::number(first)));
        QVERIFY(!monitor.isMicOn());
        QVERIFY(clock.elapsed() < 100);
    }
};

QTEST_GUILESS_MAIN(TestMedia)
#include "tst_platform_media.moc"
