#pragma once

#include "HotKeys.h"

#include <functional>
#include <QHash>
#include <QLocalServer>

namespace velmora {

// Where a desktop lets no program grab a key chord (wlroots compositors), the
// program's one system-wide chord, the reset chord, is the command
// `velmora --reset`, which the user binds in the compositor's own configuration
// (README). The running instance listens on a socket in the runtime folder, only
// for its own user, and presses every registered chord when asked.
class CommandHotKeys : public QObject, public HotKeys
{
    Q_OBJECT
public:
    explicit CommandHotKeys(const QString& socketPath, QObject* parent = nullptr);

    quint32 registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                          Handler released) override;
    void unregisterChord(quint32 handle) override;

    bool isListening() const { return m_server.isListening(); }
    void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }

    // `velmora --reset`: asks the running instance; answers the exit status.
    static int sendReset(const QString& socketPath);

protected:
    // Presses or releases one registered chord; nothing when it is gone.
    void fire(quint32 handle, bool pressed);

private:
    void answer();

    struct Chord
    {
        Handler pressed;
        Handler released;
    };
    QHash<quint32, Chord> m_chords;
    quint32 m_next = 0;
    QLocalServer m_server;

protected:
    std::function<void(const QString&)> m_log;
};

} // namespace velmora
