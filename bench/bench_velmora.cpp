// Prints the figures the program is held to: the cost of a scheduling tick, of a
// usage-log row on a large log, of reading that log for the day's summary, and the resident memory of the
// real program after start-up with the lock down. Run on demand: build/bin/bench_velmora.

#include "AppDelegate.h"
#include "FakePorts.h"
#include "FocusSummary.h"
#include "PreferenceKeys.h"
#include "PulseMediaMonitor.h"
#include "SettingsPreferences.h"
#include "UsageLog.h"

#include <algorithm>
#include <cstdio>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <vector>

using namespace velmora;
using namespace velmora::test;

static double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

static void benchTick(MediaMonitor* realMedia, const char* label)
{
    QTemporaryDir dir;
    FakePorts fakes;
    fakes.preferences.setValue(keys::kUserdefaultsFirstRun, true);
    fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate,
                               QDateTime(QDate(2026, 11, 23), QTime(7, 0)));
    fakes.clock.set(QDateTime(QDate(2026, 11, 23), QTime(12, 0)));
    Ports ports = fakes.ports();
    if (realMedia)
        ports.media = realMedia;
    AppPaths paths;
    paths.dataFolder = dir.filePath(QStringLiteral("data"));
    AppDelegate app(ports, paths);
    app.applicationWillFinishLaunching();
    fakes.scheduler.flush();

    std::vector<double> samples;
    for (int i = 0; i < (realMedia ? 200 : 2000); ++i) {
        QElapsedTimer t;
        t.start();
        app.backgroundThread();
        samples.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::printf("tick (%s): median %.4f ms, worst %.4f ms over %zu ticks (target < 1 ms)\n", label,
                median(samples), *std::max_element(samples.begin(), samples.end()), samples.size());
}

static void benchUsageLog()
{
    QTemporaryDir dir;
    FakeClock clock;
    const QString path = dir.filePath(QStringLiteral("vlmrStats.csv"));
    QByteArray contents(UsageLog::kHeader);
    const QByteArray row = "break,2026-11-23 07:01:00,Walk,300,,,2026-11-23 07:00:30,,,,\n";
    for (int i = 0; i < 1'000'000; ++i)
        contents += row;
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(contents);
    file.close();
    UsageLog log(clock, path);
    std::vector<double> samples;
    for (int i = 0; i < 15; ++i) {
        QElapsedTimer t;
        t.start();
        log.addEntryInCsv({.logType = QStringLiteral("break"),
                           .activity = QStringLiteral("Walk"),
                           .durationInSeconds = QStringLiteral("300")});
        samples.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::printf("addEntryInCsv at 1,000,000 rows (%.1f MB): median %.3f ms (target < 1 ms)\n",
                double(contents.size()) / 1e6, median(samples));

    // The shut-off summary reads the whole log; a year of heavy use is some 100,000 rows.
    QFile::resize(path, qint64(qstrlen(UsageLog::kHeader)) + 100'000 * row.size());
    samples.clear();
    for (int i = 0; i < 5; ++i) {
        QElapsedTimer t;
        t.start();
        readCsv(path, QDateTime(QDate(2026, 11, 23), QTime(7, 0)));
        samples.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::printf("readCsv of 100,000 rows: median %.1f ms\n", median(samples));
}

static long residentKb(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return -1;
}

static void benchResidentMemory()
{
    const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/velmora");
    if (!QFile::exists(program)) {
        std::printf("resident memory: %s not built\n", qPrintable(program));
        return;
    }
    QTemporaryDir home;
    const QString config = home.filePath(QStringLiteral("config"));
    {
        // A day already done and the night's lock bought off: nothing is shown.
        SettingsPreferences prefs(config + QStringLiteral("/velmora/velmora.conf"));
        const QDateTime farAhead = QDateTime::currentDateTime().addDays(2);
        prefs.setValue(keys::kUserdefaultsFirstRun, true);
        prefs.setValue(keys::kUserdefaultsLastHabitShowDate, farAhead);
        prefs.setValue(keys::kUserdefaultsShutdownAborted, farAhead);
        prefs.sync();
    }
    QProcess velmora;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), config);
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.path());
    // On a display the figure includes the X connection and the tray icon.
    env.insert(QStringLiteral("QT_QPA_PLATFORM"),
               qEnvironmentVariableIsEmpty("DISPLAY") ? QStringLiteral("offscreen") : QStringLiteral("xcb"));
    env.insert(QStringLiteral("PATH"), QStringLiteral("/nonexistent")); // no systemctl calls
    env.remove(QStringLiteral("VELMORA_CONFIG_SERVER"));
    velmora.setProcessEnvironment(env);
    velmora.start(program, {});
    if (!velmora.waitForStarted()) {
        std::printf("resident memory: could not start %s\n", qPrintable(program));
        return;
    }
    QThread::sleep(4); // let start-up and the first ticks settle
    std::printf("resident memory after start-up, lock down, no web view: %.1f MB (target < 60 MB)\n",
                double(residentKb(velmora.processId())) / 1024.0);
    velmora.kill();
    velmora.waitForFinished();
}

int main(int argc, char* argv[])
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchTick(nullptr, "fake media");
    PulseMediaMonitor pulse;
    benchTick(&pulse, "real PulseAudio and /proc scan");
    benchUsageLog();
    qputenv("QT_QPA_PLATFORM", platform);
    benchResidentMemory();
    return 0;
}
