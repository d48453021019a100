#pragma once

#include "AppDelegate.h"
#include "FakePorts.h"

#include <memory>
#include <QFile>
#include <QTemporaryDir>

namespace velmora::test {

// A program on the virtual clock: fake ports, a private data folder and a
// settings document of the test's own.
struct AppFixture
{
    FakePorts fakes;
    QTemporaryDir dir;
    std::unique_ptr<AppDelegate> app;

    static QByteArray dayDocument()
    {
        return R"({
            "morningHabits": [{"name": "Water", "durationSeconds": 30},
                              {"name": "Stretch", "durationSeconds": 60}],
            "eveningHabits": [{"name": "Journal", "durationSeconds": 120}],
            "startTime": "07:00", "shutOffTime": "22:00"})";
    }

    explicit AppFixture(const QByteArray& document = dayDocument())
    {
        QFile file(settingsPath());
        file.open(QIODevice::WriteOnly);
        file.write(document);
        fakes.preferences.setValue(QStringLiteral("kUserdefaultsFirstRun"), true);
        // Tests run without a tray; the one-time hint about it is its own test.
        fakes.preferences.setValue(QStringLiteral("velmoraTrayHintShown"), true);
    }

    // The night's summary and evening routine are behind us: a launch before the
    // start time finds only the lock.
    void nightStagesDone(const QDateTime& until)
    {
        fakes.preferences.setValue(QStringLiteral("kUserdefaultsFocusSummaryShowedTillDate"), until);
        fakes.preferences.setValue(QStringLiteral("kUserdefaultsEveningHabitsShowedTillDate"), until);
    }

    QString settingsPath() const { return dir.filePath(QStringLiteral("settings.json")); }
    QString dataFolder() const { return dir.filePath(QStringLiteral("data")); }

    // Starts the program at the given moment, as a login or a restart would.
    AppDelegate& launch(const QDateTime& at)
    {
        app.reset();
        fakes.clock.set(at);
        AppPaths paths;
        paths.dataFolder = dataFolder();
        paths.packagedSettings = settingsPath();
        if (!catalogue.isEmpty()) {
            QFile file(dir.filePath(QStringLiteral("config.json")));
            file.open(QIODevice::WriteOnly);
            file.write(catalogue);
            paths.packagedCatalogue = file.fileName();
        }
        app = std::make_unique<AppDelegate>(fakes.ports(), paths);
        app->terminate = [this](int status) { exitStatuses << status; };
        app->applicationWillFinishLaunching();
        fakes.scheduler.flush();
        return *app;
    }

    QString debugLog() const
    {
        QFile file(dataFolder() + QStringLiteral("/Debug_Logs.txt"));
        file.open(QIODevice::ReadOnly);
        return QString::fromUtf8(file.readAll());
    }
    int logCount(const QString& line) const
    {
        return debugLog().count(QStringLiteral("  -  ") + line + u'\n');
    }

    QList<int> exitStatuses;
    // A text catalogue of the test's own instead of the packaged one.
    QByteArray catalogue;
};

inline QDateTime at(int day, const QTime& time)
{
    return QDateTime(QDate(2026, 11, day), time);
}

} // namespace velmora::test
