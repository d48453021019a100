#pragma once

#include "AppDelegate.h"
#include "FakePorts.h"
#include "PreferenceKeys.h"
#include "UsageLog.h"

#include <memory>
#include <QAbstractButton>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

namespace velmora::test {

inline QDateTime at(int day, const QTime& time)
{
    return QDateTime(QDate(2026, 11, day), time);
}

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
        dayDocumentWith(document);
        fakes.preferences.setValue(u"kUserdefaultsFirstRun"_s, true);
        // Tests run without a tray; the one-time hint about it is its own test.
        fakes.preferences.setValue(u"velmoraTrayHintShown"_s, true);
    }

    // The night's summary and evening routine are behind us: a launch before the
    // start time finds only the lock.
    void nightStagesDone(const QDateTime& until)
    {
        fakes.preferences.setValue(u"kUserdefaultsFocusSummaryShowedTillDate"_s, until);
        fakes.preferences.setValue(u"kUserdefaultsEveningHabitsShowedTillDate"_s, until);
    }

    // The packaged settings document the next launch reads.
    void dayDocumentWith(const QByteArray& document)
    {
        QFile file(dir.filePath(u"settings.json"_s));
        file.open(QIODevice::WriteOnly);
        file.write(document);
    }

    // This morning's routine is done: the day runs without it.
    void morningDone()
    {
        fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
    }

    // The 23rd before its start time: yesterday's routine and last night are behind us.
    void beforeMorning()
    {
        fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(22, QTime(7, 0)));
        nightStagesDone(at(23, QTime(7, 0)));
    }

    // The morning routine's overview is up at 07:00:03.
    AppDelegate& morningUp()
    {
        beforeMorning();
        fakes.preferences.setValue(keys::kUserdefaultsReducedMotion, true);
        AppDelegate& a = launch(at(23, QTime(6, 59, 58)));
        fakes.scheduler.advanceTo(QTime(7, 0, 3));
        return a;
    }

    // The usage log's rows without their time stamp (the write moment).
    QStringList usageRows() const
    {
        const QString all = readAll(dataFolder() + u"/vlmrStats.csv"_s);
        QStringList out;
        for (const QString& row : all.mid(qstrlen(UsageLog::kHeader)).split(u'\n', Qt::SkipEmptyParts)) {
            QStringList fields = row.split(u',');
            fields.removeAt(1);
            out << fields.join(u',');
        }
        return out;
    }

    static QString readAll(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    QString dataFolder() const { return dir.filePath(u"data"_s); }

    // Starts the program at the given moment, as a login or a restart would.
    AppDelegate& launch(const QDateTime& at)
    {
        app.reset();
        fakes.clock.set(at);
        AppPaths paths;
        paths.dataFolder = dataFolder();
        paths.packagedSettings = dir.filePath(u"settings.json"_s);
        paths.configServer = configServer;
        if (!catalogue.isEmpty()) {
            QFile file(dir.filePath(u"config.json"_s));
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

    QString debugLog() const { return readAll(dataFolder() + u"/Debug_Logs.txt"_s); }
    int logCount(const QString& line) const { return debugLog().count(u"  -  "_s + line + u'\n'); }

    QList<int> exitStatuses;
    // A text catalogue of the test's own instead of the packaged one.
    QByteArray catalogue;
    // Where the catalogue is downloaded from; the test answers the request.
    QUrl configServer;
};

inline void click(QAbstractButton* button)
{
    QVERIFY2(button->isVisible() && button->isEnabled(), qPrintable(button->objectName()));
    QTest::mouseClick(button, Qt::LeftButton);
}

} // namespace velmora::test
