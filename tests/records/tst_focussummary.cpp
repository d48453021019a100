#include "FocusSummary.h"
#include "focusSummaryVc.h"
#include "TextCatalogue.h"
#include "UsageLog.h"

#include <QFile>
#include <QJsonDocument>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;

namespace {

const QDateTime kBoundary(QDate(2026, 3, 14), QTime(7, 0));

QByteArray row(const char* type, const char* timestamp, const char* activity, const char* duration,
               const char* quantity = "", const char* work = "", const char* distractions = "",
               const char* feedback = "")
{
    return QByteArray(type) + ',' + timestamp + ',' + activity + ',' + duration + ",How many?," + quantity +
           ",2026-03-14 06:59:00," + work + ',' + distractions + ",," + feedback + '\n';
}

QByteArray log(std::initializer_list<QByteArray> rows)
{
    QByteArray bytes(UsageLog::kHeader);
    for (const QByteArray& r : rows)
        bytes += r;
    return bytes;
}

QString focusRows(const FocusSummaryData& s)
{
    QStringList out;
    for (const SummaryDic& d : s.arrFocusSummaryDic)
        out << QStringList{d[u"Activity"_s], d[u"Duration in seconds"_s], d[u"Work achieved"_s],
                           d[u"Feedback"_s]}
                   .join(u'/');
    return out.join(u';');
}

QString activityRows(const FocusSummaryData& s)
{
    QStringList out;
    for (const SummaryDic& d : s.arrActivitySummaryDic) {
        QStringList numbers;
        for (const char* key : {"totalQuantity", "average", "max", "min", "totalDuration"})
            numbers << d[QLatin1String(key)];
        out << d[u"Activity"_s] + u'=' + numbers.join(u'/');
    }
    return out.join(u';');
}

} // namespace

// The table's rows, cells joined by '|'.
static QStringList cells(const QTableWidget* table)
{
    QStringList rows;
    for (int r = 0; r < table->rowCount(); ++r) {
        QStringList row;
        for (int c = 0; c < table->columnCount(); ++c)
            row << (table->item(r, c) ? table->item(r, c)->text() : u"<unset>"_s);
        rows << row.join(u'|');
    }
    return rows;
}

class FocusSummaryTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { dir = std::make_unique<QTemporaryDir>(); }
    void todaysRows_data()
    {
        QTest::addColumn<QByteArray>("file");  // null: no file at all
        QTest::addColumn<QString>("expected"); // total | focus blocks | activities

        QTest::newRow("only rows strictly after the morning's start")
            << log({row("focus block", "2026-03-13 23:00:00", "Deep", "600"),
                    row("focus block", "2026-03-14 01:00:00", "Deep", "600"),
                    row("focus block", "2026-03-14 07:00:00", "Deep", "600"),
                    row("focus block", "2026-03-14 07:00:01", "Deep", "1500", "", "plän ✅"),
                    row("focus block", "2026-03-14 12:00:00", "Write", "2400", "", "draft"),
                    row("break", "2026-03-14 06:00:00", "Walk", "300")})
            << "1h 5m 0s | Deep/1500/plän ✅/;Write/2400/draft/ | ";
        QTest::newRow("other log types and bad time stamps do not count")
            << log({row("focus mode abort", "2026-03-14 09:00:00", "focus block - Deep", "600"),
                    row("morning routine", "2026-03-14 09:00:00", "Water", "30"),
                    row("", "2026-03-14 09:00:00", "", ""),
                    row("focus block", "2026-03-14T09:00:00", "Deep", "600"),
                    row("focus block", "2026-3-14 09:00:00", "Deep", "600"),
                    row("focus block", "2026-03-14 09:00:00 ", "Deep", "600"),
                    row("focus block", "2026-03-32 09:00:00", "Deep", "600"),
                    row("focus block", "2026-03-14 09:60:00", "Deep", "600")})
            << "0h 0m 0s |  | ";
        QTest::newRow("a comma in free text shifts the row out")
            << log({row("focus block", "2026-03-14 09:00:00", "Deep", "600", "", "plans, tests"),
                    row("focus block", "2026-03-14 10:00:00", "Deep", "900", "", "tests")})
            << "0h 15m 0s | Deep/900/tests/ | ";
        QTest::newRow("a duration that is no number counts as 0")
            << log({row("focus block", "2026-03-14 09:00:00", "Deep", "x"),
                    row("focus block", "2026-03-14 10:00:00", "Deep", "-1")})
            << "0h 0m -1s | Deep/x//;Deep/-1// | ";
        QTest::newRow("quantities: -1 and words are dropped, -2 counts")
            << log({row("break", "2026-03-14 09:00:00", "Walk", "300"),
                    row("break", "2026-03-14 09:10:00", "Pushups", "60", "12"),
                    row("break", "2026-03-14 09:20:00", "Pushups", "60", "x"),
                    row("break", "2026-03-14 09:30:00", "Pushups", "60", "-1"),
                    row("break", "2026-03-14 09:40:00", "Pushups", "60", "-2"),
                    row("break", "2026-03-14 09:50:00", "Pushups", "-1", "12 more"),
                    row("break", "2026-03-14 10:00:00", "Walk", "x")})
            << "0h 0m 0s |  | Walk=0/0/0/0/300;Pushups=10/5/12/-2/240";
        QTest::newRow("columns are found by name")
            << QByteArray("Log type,Duration in seconds,Timestamp\nfocus block,120,2026-03-14 09:00:00\n")
            << "0h 2m 0s | /120// | ";
        QTest::newRow("missing file") << QByteArray() << "0h 0m 0s |  | ";
    }

    void todaysRows()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, expected);
        const QString path = file.isNull() ? dir->filePath(u"none.csv"_s) : write(file);
        const FocusSummaryData s = readCsv(path, kBoundary);
        QCOMPARE(QStringList({s.totalFocusTime, focusRows(s), activityRows(s)}).join(QLatin1String(" | ")),
                 expected);
    }

    void screenShowsTheDay()
    {
        const QString path = write(log({
            row("focus block", "2026-03-14 09:00:00", "Deep", "3661", "", "tests", "mail"),
            row("break", "2026-03-14 09:30:00", "Pushups", "60", "12"),
            row("focus block", "2026-03-14 10:00:00", "Write", "x", "", "draft"),
            row("break", "2026-03-14 10:30:00", "Walk", "300"),
            row("break", "2026-03-14 11:30:00", "Pushups", "60", "-2"),
        }));
        TextCatalogue texts;
        focusSummaryVc screen(texts);
        int continued = 0;
        screen.onContinue = [&continued] { ++continued; };
        screen.show();

        // Collapsed at first: only the title and the button that opens the rest.
        screen.viewWillAppear(path, kBoundary);
        QVERIFY(!screen.tblViewFocusSummary->isVisible());
        QTest::mouseClick(screen.btnClickHere, Qt::LeftButton);
        QVERIFY(!screen.btnClickHere->isVisible());
        QVERIFY(screen.tblViewFocusSummary->isVisible() && screen.tblViewActivitySummary->isVisible());

        const QTableWidget* focus = screen.tblViewFocusSummary;
        QCOMPARE(cells(focus), (QStringList{"Deep|2026-03-14 06:59:00|1h 1m 1s|tests|mail",
                                            "Write|2026-03-14 06:59:00|<unset>|draft|"}));
        const QTableWidget* activities = screen.tblViewActivitySummary;
        QCOMPARE(cells(activities), (QStringList{"Pushups|10|5|12|-2|2m", "Walk|0|0|0|0|5m"}));

        // Every appearance reads the file and the catalogue anew and starts collapsed.
        write(row("focus block", "2026-03-14 12:00:00", "Deep", "60"));
        texts.setConfigjson(QJsonDocument::fromJson(R"({"focusInfo": {"focusSummaryInfo": {
            "title": "<COUNT> blocks", "totalFocusTimeText": "Focused <TIME>"}}})")
                                .object());
        screen.viewWillAppear(path, kBoundary);
        QCOMPARE(screen.lblTitle->text(), u"3 blocks"_s);
        QVERIFY(screen.btnClickHere->isVisible() && !screen.tblViewFocusSummary->isVisible());
        QTest::mouseClick(screen.btnClickHere, Qt::LeftButton);
        QCOMPARE(screen.lblTotalFocusTime->text(), u"Focused 1h 2m 1s"_s);

        QTest::mouseClick(screen.btnContinue, Qt::LeftButton);
        QCOMPARE(continued, 1);
    }

private:
    QString write(const QByteArray& bytes)
    {
        const QString path = dir->filePath(u"vlmrStats.csv"_s);
        QFile f(path);
        f.open(QIODevice::WriteOnly | QIODevice::Append);
        f.write(bytes);
        return path;
    }
    std::unique_ptr<QTemporaryDir> dir;
};

QTEST_MAIN(FocusSummaryTest)
#include "tst_focussummary.moc"
