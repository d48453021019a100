#include "GnomeExtensionInstall.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace velmora;

class TestGnome : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void install_data();
    void install();
};

void TestGnome::install_data()
{
    QTest::addColumn<QByteArray>("metadata"); // what the folder holds already; empty: nothing
    QTest::addColumn<int>("shell");
    QTest::addColumn<bool>("written");
    const QByteArray v1for43 = R"({"uuid": "velmora@velmora", "shell-version": ["43", "44"], "version": 1})";
    QTest::newRow("missing, 43") << QByteArray() << 43 << true;
    QTest::newRow("same version") << v1for43 << 44 << false;
    QTest::newRow("older") << QByteArray(v1for43).replace("\"version\": 1", "\"version\": 0") << 43 << true;
    QTest::newRow("the other form") << v1for43 << 48 << true;
    QTest::newRow("unreadable") << QByteArray("{\"uuid\": \"velm") << 43 << true;
}

void TestGnome::install()
{
    QFETCH(QByteArray, metadata);
    QFETCH(int, shell);
    QFETCH(bool, written);
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

QTEST_GUILESS_MAIN(TestGnome)
#include "tst_platform_gnome.moc"
