#include "GnomeExtensionInstall.h"
#include "GnomePorts.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;

class TestGnome : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void accelerator_data();
    void accelerator();
    void install_data();
    void install();
    void shellMajor();
};

void TestGnome::accelerator_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<QString>("expected");
    QTest::newRow("letter") << int(Qt::Key_R) << (Qt::ControlModifier | Qt::AltModifier) << "<Control><Alt>r";
    QTest::newRow("Shift+Tab is Backtab")
        << int(Qt::Key_Backtab) << (Qt::ControlModifier | Qt::AltModifier | Qt::ShiftModifier)
        << "<Control><Alt><Shift>Tab";
    QTest::newRow("function key") << int(Qt::Key_F12) << Qt::KeyboardModifiers(Qt::MetaModifier)
                                  << "<Super>F12";
    QTest::newRow("keypad digit") << int(Qt::Key_5) << (Qt::KeypadModifier | Qt::ControlModifier)
                                  << "<Control>KP_5";
    QTest::newRow("punctuation") << int(Qt::Key_BracketLeft) << Qt::KeyboardModifiers(Qt::ShiftModifier)
                                 << "<Shift>bracketleft";
    QTest::newRow("no name") << int(Qt::Key_Eacute) << Qt::KeyboardModifiers(Qt::ControlModifier) << "";
}

void TestGnome::accelerator()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(QString, expected);
    QCOMPARE(GnomeHotKeys::accelerator(key, modifiers), expected);
}

void TestGnome::install_data()
{
    QTest::addColumn<QByteArray>("metadata"); // what the folder holds already; empty: nothing
    QTest::addColumn<int>("shell");
    QTest::addColumn<bool>("written");
    const QByteArray v1for43 = R"({"uuid": "velmora@velmora", "shell-version": ["43", "44"], "version": 1})";
    QTest::newRow("missing, 43") << QByteArray() << 43 << true;
    QTest::newRow("missing, 48") << QByteArray() << 48 << true;
    QTest::newRow("same version") << v1for43 << 44 << false;
    QTest::newRow("older") << QByteArray(
                                  R"({"uuid": "velmora@velmora", "shell-version": ["43"], "version": 0})")
                           << 43 << true;
    QTest::newRow("the other form") << v1for43 << 45 << true;
    QTest::newRow("another extension's")
        << QByteArray(R"({"uuid": "x@y", "shell-version": ["43"], "version": 9})") << 43 << true;
    QTest::newRow("unreadable") << QByteArray("{\"uuid\": \"velm") << 43 << true;
}

void TestGnome::install()
{
    QFETCH(QByteArray, metadata);
    QFETCH(int, shell);
    QFETCH(bool, written);
    QVERIFY(GnomeExtensionInstall::carriedVersion() >= 1);
    QTemporaryDir dir;
    const QString folder = dir.path() + QStringLiteral("/velmora@velmora");
    if (!metadata.isEmpty()) {
        QVERIFY(QDir().mkpath(folder));
        QFile file(folder + QStringLiteral("/metadata.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(metadata);
    }
    QString error;
    QCOMPARE(GnomeExtensionInstall::installIfOlder(folder, shell, &error), written);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    if (!written)
        return;
    QCOMPARE(GnomeExtensionInstall::installedVersion(folder, shell), GnomeExtensionInstall::carriedVersion());
    QFile script(folder + QStringLiteral("/extension.js"));
    QVERIFY(script.open(QIODevice::ReadOnly));
    const QByteArray text = script.readAll();
    // Each form is whole: no marker left, and only its own way of importing.
    QVERIFY(!text.contains("\n//@"));
    QCOMPARE(text.contains("imports.gi"), shell < 45);
    QCOMPARE(text.contains("export default class"), shell >= 45);
    QVERIFY(!GnomeExtensionInstall::installIfOlder(folder, shell, &error));
}

void TestGnome::shellMajor()
{
    QCOMPARE(GnomeExtensionInstall::majorOf(QStringLiteral("43.9")), 43);
    QCOMPARE(GnomeExtensionInstall::majorOf(QStringLiteral("48.rc")), 48);
    QCOMPARE(GnomeExtensionInstall::majorOf(QString()), 0);
}

QTEST_GUILESS_MAIN(TestGnome)
#include "tst_platform_gnome.moc"
