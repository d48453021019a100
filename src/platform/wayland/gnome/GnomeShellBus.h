#pragma once

#include <functional>
#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariantList>

namespace velmora {

// The session-bus face of Velmora's GNOME Shell extension (org.velmora.Shell1).
// Calls that change something go out without waiting; those that answer wait a
// short while, and an extension that does not answer in time answers nothing.
class GnomeShellBus : public QObject
{
    Q_OBJECT
public:
    static constexpr const char* kService = "org.velmora.Shell";
    static constexpr const char* kPath = "/org/velmora/Shell";
    static constexpr const char* kInterface = "org.velmora.Shell1";

    explicit GnomeShellBus(const QDBusConnection& connection, QObject* parent = nullptr);

    void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }
    void log(const QString& line) const;

    // The extension's version, empty when it does not answer.
    QString version();
    void send(const QString& method, const QVariantList& arguments);
    // The call's first answer; invalid when the call failed.
    QVariant ask(const QString& method, const QVariantList& arguments = {});

Q_SIGNALS:
    void frontWindowChanged();
    void chordPressed(const QString& accelerator);
    // The extension came back on the bus (the shell reloaded it): what it held for
    // us is gone and is to be asked for again.
    void extensionReturned();

private Q_SLOTS:
    void onFrontWindowChanged();
    void onChordPressed(const QString& accelerator);

private:
    QDBusConnection m_connection;
    QDBusServiceWatcher m_watcher;
    std::function<void(const QString&)> m_log;
};

} // namespace velmora
