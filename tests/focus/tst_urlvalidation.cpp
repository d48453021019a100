// Address matching: which list entry matches which address, quirks included.
#include "UrlBlocker.h"
#include "urlValidation.h"

#include <QtTest>

using namespace velmora;

class TestUrlValidation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isUrlValid_data()
    {
        QTest::addColumn<QString>("entry");
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("matches");

        const auto row = [](const char* name, const char* entry, const char* address, bool matches) {
            QTest::newRow(name) << QString(entry) << QString(address) << matches;
        };
        row("fragment matches the www host", "example", "https://www.example.org/a", true);
        row("fragment matches a subdomain", "example.org", "https://m.example.org/", true);
        row("full address: its host, any path", "https://www.example.org/feed",
            "https://example.org/other?q=1", true);
        row("star form used as given: not the bare domain", "*.example.org", "https://example.org/", false);
        row("star form: a subdomain", "*.example.org", "https://video.example.org/", true);
        row("file entry: the whole address, exactly", "file:///Users/", "file:///Users/", true);
        row("file entry: a longer address is no match", "file:///Users/", "file:///Users/me/a.html", false);
        row("file entry with star", "file:///Users/*", "file:///Users/me/a.html", true);
        row("file entry: address without ://", "file:*", "about:blank", false);
        row("case differs: no match", "Example", "https://example.org/", false);
        row("no host: *x* fails", "*x*", "about:blank", false);
        row("no host: * passes", "*", "about:blank", true);
        row("www stays in the entry, not the host", "www.example.org", "https://www.example.org/", false);
        row("http without scheme: all match", "httpbin.org", "https://elsewhere.test/", true);
        row("question mark is one character", "exam?le", "https://example.org/", true);
        row("devtools is an address", "devtools", "devtools://devtools/bundled/inspector.html", true);
        row("other site", "example.org", "https://example.com/", false);
    }
    void isUrlValid()
    {
        QFETCH(QString, entry);
        QFETCH(QString, address);
        QFETCH(bool, matches);
        QCOMPARE(urlValidation::isUrlValid(address, entry, velmora::getDomainFromUrl(address)), matches);
    }

    void getDomainFromUrl_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("domain");
        const auto row = [](const char* name, const char* address, const char* domain) {
            QTest::newRow(name) << QString(address) << QString(domain);
        };
        row("www removed", "https://www.example.org/x", "example.org");
        row("every www removed", "https://sub.www.example.www.org", "sub.example.org");
        row("no scheme, no host", "example.org", "");
        row("not an address", "not an address", "");
        row("file address", "file:///home/me/a.html", "");
        row("port dropped", "http://127.0.0.1:8080/a", "127.0.0.1");
        row("empty", "", "");
    }
    void getDomainFromUrl()
    {
        QFETCH(QString, address);
        QFETCH(QString, domain);
        QCOMPARE(velmora::getDomainFromUrl(address), domain);
    }

    void endTimeText_data()
    {
        QTest::addColumn<QDateTime>("end");
        QTest::addColumn<QString>("text");
        QTest::newRow("afternoon reads like morning")
            << QDateTime(QDate(2026, 11, 23), QTime(15, 4, 5)) << "2026-11-23T03:04:05";
        QTest::newRow("half past midnight is twelve")
            << QDateTime(QDate(2026, 11, 23), QTime(0, 30)) << "2026-11-23T12:30:00";
        QTest::newRow("new year's day in the old week-year")
            << QDateTime(QDate(2027, 1, 1), QTime(9, 0)) << "2026-01-01T09:00:00";
    }
    void endTimeText()
    {
        QFETCH(QDateTime, end);
        QFETCH(QString, text);
        QCOMPARE(UrlBlocker::focusModeEndTimeText(end), text);
    }
};

QTEST_MAIN(TestUrlValidation)
#include "tst_urlvalidation.moc"
