#include "QtScheduler.h"

#include <QTest>

using namespace Qt::StringLiterals;
using velmora::QtScheduler;
using velmora::TimerId;

class TestScheduler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What happens to a timer before it is due decides whether its callback runs.
    void singleShot_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<int>("expectedRuns");

        QTest::newRow("nothing") << u"nothing"_s << 1;
        QTest::newRow("cancelled") << u"cancel"_s << 0;
        QTest::newRow("context destroyed") << u"destroy"_s << 0;
    }

    void singleShot()
    {
        QFETCH(QString, before);
        QFETCH(int, expectedRuns);

        QtScheduler scheduler;
        auto context = std::make_unique<QObject>();
        int runs = 0;
        const TimerId id = scheduler.singleShot(5, context.get(), [&] { ++runs; });
        if (before == u"cancel")
            scheduler.cancel(id);
        if (before == u"destroy")
            context.reset();
        QCOMPARE(scheduler.isActive(id), before == u"nothing");

        // A later timer shows that the first one's turn has passed.
        QObject witness;
        bool later = false;
        scheduler.singleShot(30, &witness, [&] { later = true; });
        QTRY_VERIFY(later);
        QCOMPARE(runs, expectedRuns);
        QVERIFY(!scheduler.isActive(id));
    }

    void repeatingEndsByCancelOrWithItsContext_data()
    {
        QTest::addColumn<bool>("destroyContext");
        QTest::newRow("cancelled from its own callback") << false;
        QTest::newRow("context deleted from its own callback") << true;
    }

    void repeatingEndsByCancelOrWithItsContext()
    {
        QFETCH(bool, destroyContext);

        QtScheduler scheduler;
        auto* context = new QObject(this);
        int runs = 0;
        TimerId id = 0;
        id = scheduler.repeating(2, context, [&] {
            if (++runs == 3 && destroyContext)
                context->deleteLater();
            else if (runs == 3)
                scheduler.cancel(id);
        });
        QTRY_VERIFY(!scheduler.isActive(id));
        QTest::qWait(20);
        QCOMPARE(runs, 3);
    }
};

QTEST_GUILESS_MAIN(TestScheduler)
#include "tst_platform_scheduler.moc"
