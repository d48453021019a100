#include <QtTest>
class LaunchTest : public QObject { Q_OBJECT };
QTEST_MAIN(LaunchTest)
#include "tst_launch.moc"
