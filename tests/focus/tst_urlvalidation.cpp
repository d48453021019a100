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

        QTest::newRow("fragment matches the www host") << "example"
                                                       << "https://www.example.org/a" << true;
        QTest::newRow("fragment matches a subdomain") << "example.org"
                                                      << "https://m.example.org/" << true;
        QTest::newRow("full address means its host, any path") << "https://www.example.org/feed"
                                                               << "https://example.org/other?q=1" << true;
        QTest::newRow("star form used as given: not the bare domain") << "*.example.org"
                                                                      << "https://example.org/" << false;
        QTest::newRow("star form: a subdomain") << "*.example.org"
                                                << "https://video.example.org/" << true;
        QTest::newRow("file entry: the whole address, exactly") << "file:///Users/"
                                                                << "file:///Users/" << true;
        QTest::newRow("file entry: a longer address is no match") << "file:///Users/"
                                                                  << "file:///Users/me/a.html" << false;
        QTest::newRow("file entry with star") << "file:///Users/*"
                                              << "file:///Users/me/a.html" << true;
        QTest::newRow("file entry: address without ://") << "file:*"
                                                         << "about:blank" << false;
        QTest::newRow("case differs: no match") << "Example"
                                                << "https://example.org/" << false;
        QTest::newRow("no host: *x* fails") << "*x*"
                                            << "about:blank" << false;
        QTest::newRow("no host: * passes") << "*"
                                           << "about:blank" << true;
        QTest::newRow("www in the entry stays, the host loses it") << "www.example.org"
                                                                   << "https://www.example.org/" << false;
        QTest::newRow("entry with http but no scheme names no host: all match")
            << "httpbin.org"
            << "https://elsewhere.test/" << true;
        QTest::newRow("question mark is one character") << "exam?le"
                                                        << "https://example.org/" << true;
        QTest::newRow("devtools is an address like any other")
            << "devtools"
            << "devtools://devtools/bundled/inspector.html" << true;
        QTest::newRow("other site") << "example.org"
                                    << "https://example.com/" << false;
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
        QTest::newRow("www removed") << "https://www.example.org/x"
                                     << "example.org";
        QTest::newRow("every www removed") << "https://sub.www.example.www.org"
                                           << "sub.example.org";
        QTest::newRow("no scheme, no host") << "example.org"
                                            << "";
        QTest::newRow("not an address") << "not an address"
                                        << "";
        QTest::newRow("file address") << "file:///home/me/a.html"
                                      << "";
        QTest::newRow("port dropped") << "http://127.0.0.1:8080/a"
                                      << "127.0.0.1";
        QTest::newRow("empty") << ""
                               << "";
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
