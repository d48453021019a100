#pragma once

#include "AppFixture.h"
#include "LockWindows.h"
#include "UsageLog.h"
#include "ViewController.h"
#include "WayOut.h"

#include <QAbstractButton>
#include <QtTest>

namespace velmora::test {

// A launched program with the ways out laid into its lock window, the way the
// application does it. Uploads go to a webhook of the test's own.
struct WayOutFixture : AppFixture
{
    WayOut* wayOut = nullptr;

    explicit WayOutFixture(const QByteArray& document = dayDocument())
        : AppFixture(document)
    {
        // Uploads go to a webhook of the test's own.
        catalogue = R"({"common": {"webhookUrl": "https://hooks.example/velmora"}})";
    }

    AppDelegate& start(const QDateTime& when)
    {
        AppDelegate& a = launch(when);
        wayOut = &a.wayOut();
        return a;
    }

    QStringList usageRows() const
    {
        QFile file(dataFolder() + QStringLiteral("/vlmrStats.csv"));
        file.open(QIODevice::ReadOnly);
        const QString rows = QString::fromUtf8(file.readAll().mid(qsizetype(qstrlen(UsageLog::kHeader))));
        QStringList out;
        // The time stamp is the write moment; everything else is compared.
        for (const QString& row : rows.split(u'\n', Qt::SkipEmptyParts)) {
            QStringList fields = row.split(u',');
            fields.removeAt(1);
            out << fields.join(u',');
        }
        return out;
    }
};

inline void click(QAbstractButton* button)
{
    QVERIFY2(button->isVisible() && button->isEnabled(), qPrintable(button->objectName()));
    QTest::mouseClick(button, Qt::LeftButton);
}

} // namespace velmora::test
