#pragma once

// Test doubles for every port: the program's timers run in virtual time, so a
// test can play a whole day in milliseconds.

#include "Ports.h"

#include <map>
#include <QMap>
#include <QPointer>
#include <QVector>

namespace velmora::test {

class FakeClock : public Clock
{
public:
    explicit FakeClock(QDateTime start = QDateTime(QDate(2026, 11, 23), QTime(6, 0)))
        : m_now(std::move(start))
    {
    }
    QDateTime now() const override { return m_now; }
    void set(const QDateTime& now) { m_now = now; }

private:
    QDateTime m_now;
};

class FakeScheduler : public Scheduler
{
public:
    explicit FakeScheduler(FakeClock& clock)
        : m_clock(clock)
    {
    }

    TimerId singleShot(qint64 ms, QObject* context, std::function<void()> callback) override
    {
        return add(ms, false, context, std::move(callback));
    }
    TimerId repeating(qint64 ms, QObject* context, std::function<void()> callback) override
    {
        return add(qMax<qint64>(ms, 1), true, context, std::move(callback));
    }
    void cancel(TimerId id) override { m_timers.erase(id); }
    bool isActive(TimerId id) const override { return m_timers.count(id) > 0; }

    // Moves virtual time forward, firing every timer that falls due on the way,
    // in order of due time.
    void advance(qint64 ms) { runUntil(m_clock.now().addMSecs(ms)); }
    void advanceTo(const QTime& time) { runUntil(QDateTime(m_clock.now().date(), time)); }
    void runUntil(const QDateTime& target)
    {
        const qint64 end = target.toMSecsSinceEpoch();
        while (true) {
            auto next = m_timers.end();
            for (auto it = m_timers.begin(); it != m_timers.end(); ++it) {
                if (next == m_timers.end() || it->second.due < next->second.due)
                    next = it;
            }
            if (next == m_timers.end() || next->second.due > end)
                break;
            const TimerId id = next->first;
            Entry entry = next->second;
            m_clock.set(QDateTime::fromMSecsSinceEpoch(entry.due));
            if (entry.repeating)
                next->second.due += entry.interval;
            else
                m_timers.erase(next);
            if (entry.hasContext && !entry.context) {
                m_timers.erase(id);
                continue;
            }
            entry.callback();
        }
        m_clock.set(target);
    }
    // Runs what is due now, such as posted calls.
    void flush() { runUntil(m_clock.now()); }
    // The machine sleeps: the wall clock moves on while timers, which count the
    // monotonic clock, stand still. Each fires once after the wake, late by the sleep.
    void sleep(qint64 ms)
    {
        m_clock.set(m_clock.now().addMSecs(ms));
        for (auto& [id, entry] : m_timers)
            entry.due += ms;
    }
    // Timers that can still fire: those of destroyed objects do not count.
    int liveTimers() const
    {
        int live = 0;
        for (const auto& [id, entry] : m_timers)
            live += !entry.hasContext || entry.context;
        return live;
    }

private:
    struct Entry
    {
        qint64 due;
        qint64 interval;
        bool repeating;
        bool hasContext;
        QPointer<QObject> context;
        std::function<void()> callback;
    };
    TimerId add(qint64 ms, bool repeating, QObject* context, std::function<void()> callback)
    {
        const TimerId id = ++m_nextId;
        m_timers[id] = Entry{m_clock.now().toMSecsSinceEpoch() + qMax<qint64>(ms, 0),
                             ms,
                             repeating,
                             context != nullptr,
                             context,
                             std::move(callback)};
        return id;
    }

    FakeClock& m_clock;
    std::map<TimerId, Entry> m_timers;
    TimerId m_nextId = 0;
};

class MemoryPreferences : public Preferences
{
public:
    QVariant value(const QString& key) const override { return m_values.value(key); }
    void setValue(const QString& key, const QVariant& value) override { m_values.insert(key, value); }
    void remove(const QString& key) override { m_values.remove(key); }
    bool contains(const QString& key) const override { return m_values.contains(key); }
    void clear() override { m_values.clear(); }
    void sync() override {}
    QMap<QString, QVariant> m_values;
};

class FakeMedia : public MediaMonitor
{
public:
    bool isMicOn() override { return mic; }
    bool isACameraOn() override { return camera; }
    std::optional<QStringList> displaySleepInhibitors() override { return inhibitors; }
    bool mic = false;
    bool camera = false;
    std::optional<QStringList> inhibitors = QStringList();
};

class FakeDisplayAwake : public DisplayAwake
{
public:
    void take(const QString&) override { held = true; }
    void release() override { held = false; }
    bool isHeld() const override { return held; }
    bool held = false;
};

class FakeNotifier : public Notifier
{
public:
    void notify(const QString& title, const QString& = {}) override { notifications << title; }
    void playSound(const QString& name) override { sounds << name; }
    QStringList notifications;
    QStringList sounds;
};

class FakeHttp : public Http
{
public:
    struct Request
    {
        QUrl url;
        QByteArray body;
        int timeoutMs;
        QPointer<QObject> context;
        Callback done;
    };
    void get(const QUrl& url, int timeoutMs, QObject* context, Callback done) override
    {
        requests.append({url, {}, timeoutMs, context, std::move(done)});
    }
    void postJson(const QUrl& url, const QByteArray& json, int timeoutMs, QObject* context,
                  Callback done) override
    {
        requests.append({url, json, timeoutMs, context, std::move(done)});
    }
    // Answers the oldest open request.
    void answer(const HttpReply& reply)
    {
        Request r = requests.takeFirst();
        if (r.context)
            r.done(reply);
    }
    QVector<Request> requests;
};

class FakeLauncher : public Launcher
{
public:
    void restartSoon() override { ++restarts; }
    void run(const QString& program, const QStringList& arguments) override
    {
        runs << (QStringList{program} + arguments);
    }
    int restarts = 0;
    QVector<QStringList> runs;
};

class FakeLoginService : public LoginService
{
public:
    bool install() override { return true; }
    void enable() override { ++enables; }
    void disable() override { ++disables; }
    int enables = 0, disables = 0;
};

class FakeHotKeys : public HotKeys
{
public:
    struct Chord
    {
        int key;
        Qt::KeyboardModifiers modifiers;
        Handler pressed;
        Handler released;
    };
    quint32 registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                          Handler released) override
    {
        chords[++last] = Chord{qtKey, modifiers, std::move(pressed), std::move(released)};
        return last;
    }
    void unregisterChord(quint32 handle) override { chords.remove(handle); }
    // Presses the chord, as the user would.
    bool press(int qtKey, Qt::KeyboardModifiers modifiers)
    {
        for (const Chord& c : std::as_const(chords)) {
            if (c.key == qtKey && c.modifiers == modifiers && c.pressed) {
                c.pressed();
                return true;
            }
        }
        return false;
    }
    QMap<quint32, Chord> chords;
    quint32 last = 0;
};

// A desktop whose front application, running and installed applications the
// test sets; hides, launches and opened addresses are recorded.
class FakeWorkspace : public Workspace
{
public:
    Application frontmostApplication() override { return front; }
    void hide(const Application& application) override { hidden.append(application.name); }
    QStringList runningApplications() override { return running; }
    QList<Application> installedApplications() override { return installed; }
    Application applicationFor(const QString& desktopFileOrName) override
    {
        for (const Application& a : std::as_const(installed)) {
            if (a.desktopFile == desktopFileOrName || a.name == desktopFileOrName.toLower() ||
                a.displayName.compare(desktopFileOrName, Qt::CaseInsensitive) == 0)
                return a;
        }
        return {};
    }
    bool launch(const Application& application) override
    {
        launched.append(application.name);
        return application.isValid();
    }
    bool openUrl(const QString& address) override
    {
        opened.append(address);
        return true;
    }

    // Brings an application to the front, as a click on its window would.
    void activate(const Application& application)
    {
        front = application;
        Q_EMIT frontApplicationChanged();
    }

    Application front;
    QStringList running;
    QList<Application> installed;
    QStringList hidden;
    QStringList launched;
    QStringList opened;
};

// All fakes together, wired into a Ports value.
struct FakePorts
{
    FakeClock clock;
    FakeScheduler scheduler{clock};
    MemoryPreferences preferences;
    FakeMedia media;
    FakeDisplayAwake displayAwake;
    FakeNotifier notifier;
    FakeHttp http;
    FakeLauncher launcher;
    FakeLoginService loginService;
    FakeHotKeys hotKeys;
    FakeWorkspace workspace;

    Ports ports()
    {
        return Ports{&clock, &scheduler, &preferences,  &media,   &displayAwake, &notifier,
                     &http,  &launcher,  &loginService, &hotKeys, &workspace};
    }
};

} // namespace velmora::test
