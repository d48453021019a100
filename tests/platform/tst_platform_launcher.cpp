#include "ProcessLauncher.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using velmora::ProcessLauncher;

class TestLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The restart command line goes through /bin/sh: every argument must arrive as it was.
    void shellQuotingSurvivesTheShell_data()
    {
        QTest::addColumn<QStringList>("words");

        QTest::newRow("quotes") << QStringList{u"it's"_s, u"\"quoted\""_s, u"'"_s};
        QTest::newRow("expansions") << QStringList{u"$HOME"_s, u"`id`"_s, u"$(id)"_s, u"*"_s, u"~"_s};
        QTest::newRow("backslashes and newline") << QStringList{u"a\\b"_s, u"line\nbreak"_s, u"\\"_s};
        QTest::newRow("empty and unicode") << QStringList{QString(), u"é 🚀"_s, u";exit 3"_s};
    }

    void shellQuotingSurvivesTheShell()
    {
        QFETCH(QStringList, words);

        QProcess shell;
        shell.start(u"/bin/sh"_s, {u"-c"_s, u"printf '%s\\0' "_s + ProcessLauncher::shellQuoted(words)});
        QVERIFY(shell.waitForFinished(5000));
        QCOMPARE(shell.exitCode(), 0);
        QByteArray output = shell.readAllStandardOutput();
        QVERIFY(output.endsWith('\0'));
        output.chop(1);
        QStringList received;
        for (const QByteArray& word : output.split('\0'))
            received << QString::fromUtf8(word);
        QCOMPARE(received, words);
    }
};

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_platform_launcher.moc"
