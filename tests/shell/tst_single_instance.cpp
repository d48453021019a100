#include "SingleInstance.h"

#include <memory>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

using velmora::SingleInstance;

class TestSingleInstance : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // A second start ends at once; a restarted copy waits, a bounded time, for the one
    // it replaces to let go of the name.
    void restartWaitsForTheOldCopyToLetGo()
    {
        QTemporaryDir dir;
        const QString name = dir.filePath(u"instance"_s);
        auto old = std::make_unique<SingleInstance>(name);
        QVERIFY(old->claim());
        QElapsedTimer clock;
        clock.start();
        QVERIFY(!SingleInstance(name).claim());
        QVERIFY(!SingleInstance(name).claim(300));
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));

        QTimer::singleShot(300, this, [&old] { old.reset(); });
        SingleInstance restarted(name);
        QVERIFY(restarted.claim(10'000));
        QVERIFY(!old);
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_single_instance.moc"
