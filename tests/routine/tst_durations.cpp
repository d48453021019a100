#include "DurationTexts.h"
#include "TextCatalogue.h"

#include <QtTest>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;

class DurationsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void forms_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("longForm");
        QTest::addColumn<QString>("shortForm");
        QTest::addColumn<QString>("clock");
        const auto row = [](int seconds, const char* longForm, const char* shortForm, const char* clock) {
            QTest::addRow("%d", seconds) << seconds << longForm << shortForm << clock;
        };
        row(0, "0 seconds", "", "00:00");
        row(1, "1 seconds", "1s", "00:01");
        row(59, "59 seconds", "59s", "00:59");
        row(60, "1 minute", "1m", "01:00");
        row(75, "1 minute", "1m 15s", "01:15");
        row(119, "1 minute", "1m 59s", "01:59");
        row(120, "2 minutes", "2m", "02:00");
        row(3600, "60 minutes", "1h", "00:00");
        row(3605, "60 minutes", "1h 5s", "00:05");
        row(3661, "61 minutes", "1h 1m 1s", "01:01");
        row(5400, "90 minutes", "1h 30m", "30:00");
        row(7200, "120 minutes", "2h", "00:00");
        row(-5, "-5 seconds", "", "00:00");
    }

    void forms()
    {
        QFETCH(int, seconds);
        QFETCH(QString, longForm);
        QFETCH(QString, shortForm);
        QFETCH(QString, clock);
        QCOMPARE(getStringTime(seconds), longForm);
        if (seconds >= 0)
            QCOMPARE(getStringTimeFromSeconds(seconds), shortForm);
        QCOMPARE(clockText(seconds), clock);
    }

    void startButton_data()
    {
        QTest::addColumn<QString>("templ");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* templ, const char* expected) {
            QTest::newRow(templ) << templ << expected;
        };
        row("Start <TIME> <NAME>", "Start 5 minutes Yoga");
        row("<NAME>: start <NAME>", "Yoga: start Yoga");
        row("Start <time> <NAME>", "Start <time> Yoga"); // a lower-case marker stays
        row("Go!", "Go!");
    }

    void startButton()
    {
        QFETCH(QString, templ);
        QFETCH(QString, expected);
        TextCatalogue texts;
        texts.startActivityButtonText = templ;
        QCOMPARE(getstartActivityButtonText(texts, 300, u"Yoga"_s), expected);
    }

    void breakTitle()
    {
        TextCatalogue texts;
        QCOMPARE(getStartBreakActivityTitleText(texts, 90, u"Walk"_s),
                 u"It’s time for a break. Do 1 minute of Walk to earn more velmora."_s);
    }
};

QTEST_GUILESS_MAIN(DurationsTest)
#include "tst_durations.moc"
