#pragma once

#include "AppFixture.h"
#include "FeedbackUpload.h"
#include "LockWindows.h"
#include "RoutineContext.h"
#include "RoutineHost.h"
#include "SyncTimestamps.h"
#include "TextCatalogue.h"
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
    // Forwards to the real lock window; the rest of the routine never asks.
    struct Host : RoutineHost
    {
        AppDelegate* app = nullptr;
        void setMainWindowVisible(bool visible) override { app->mainWindow().setIsVisible(visible); }
        bool isMainWindowVisible() const override { return app->mainWindow().isVisible(); }
        void showExtraWindows() override {}
        void hideBlankWindowInSecondaryMonitor() override {}
        void bringToFront() override {}
        void setBackgroundThreadTimer() override {}
        void setCallLook() override {}
        bool isShutOffTimeGoing() const override { return false; }
        bool isPreventUserIdleDisplaySleepOn() override { return false; }
    };

    Host host;
    SyncTimestamps sync{fakes.preferences, fakes.clock};
    TextCatalogue uploadTexts;
    std::unique_ptr<FeedbackUpload> upload;
    std::unique_ptr<WayOut> wayOut;
    int restarts = 0;

    explicit WayOutFixture(const QByteArray& document = dayDocument())
        : AppFixture(document)
    {
        uploadTexts.webhookUrl = QStringLiteral("https://hooks.example/velmora");
    }
    ~WayOutFixture() { wayOut.reset(); }

    AppDelegate& start(const QDateTime& when)
    {
        wayOut.reset();
        AppDelegate& a = launch(when);
        host.app = &a;
        upload = std::make_unique<FeedbackUpload>(fakes.http, fakes.preferences, uploadTexts, fakes.clock,
                                                  settingsPath(), a.debugLog(), fakes.scheduler);
        RoutineContext ctx{a.state(),    fakes.preferences, fakes.clock,    fakes.scheduler,    a.debugLog(),
                           a.usageLog(), a.texts(),         fakes.notifier, fakes.displayAwake, fakes.media,
                           sync,         a.schedule(),      host,           a.random()};
        wayOut = std::make_unique<WayOut>(ctx, a.viewController(), *upload, settingsPath(), [this] {
            ++restarts;
            app->quitAndRestartApp();
        });
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
