#pragma once

#include "CommandHotKeys.h"

#include <QDBusObjectPath>
#include <QVariantMap>

namespace velmora {

// The reset chord where the desktop offers the GlobalShortcuts portal
// (xdg-desktop-portal-kde): each chord is bound in one portal session with its
// keys as the preferred trigger, and the desktop, which may let the user change
// them, reports presses and releases. `velmora --reset` works here too.
class PortalHotKeys : public CommandHotKeys
{
    Q_OBJECT
public:
    explicit PortalHotKeys(const QString& socketPath, QObject* parent = nullptr);

    // Whether the session bus has a portal with GlobalShortcuts.
    static bool offered();

    quint32 registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                          Handler released) override;

    // A chord in the shortcut notation the portal takes ("CTRL+LOGO+j").
    static QString trigger(int qtKey, Qt::KeyboardModifiers modifiers);

private Q_SLOTS:
    void sessionCreated(uint response, const QVariantMap& results);
    void bound(uint response, const QVariantMap& results);
    void activated(const QDBusObjectPath& session, const QString& id, qulonglong timestamp,
                   const QVariantMap& options);
    void deactivated(const QDBusObjectPath& session, const QString& id, qulonglong timestamp,
                     const QVariantMap& options);

private:
    // Calls METHOD with ARGS; the answer arrives as a Request's Response to SLOT.
    void request(const QString& method, QVariantList args, const char* slot);
    void bindAll();

    struct Bound
    {
        quint32 handle;
        QString trigger;
    };
    QList<Bound> m_chords;
    QString m_session;
    int m_token = 0;
    bool m_bindPending = false;
};

} // namespace velmora
