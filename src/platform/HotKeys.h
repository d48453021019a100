#pragma once

#include <functional>
#include <QObject>
#include <Qt>

namespace velmora {

// System-wide key chords. The key is a Qt::Key, the modifiers Qt's.
class HotKeys
{
public:
    virtual ~HotKeys() = default;
    using Handler = std::function<void()>;
    // Answers a handle above 0 when the chord could be grabbed, 0 when it could not
    // (another client holds it); a failed chord never fires.
    virtual quint32 registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                                  Handler released) = 0;
    virtual void unregisterChord(quint32 handle) = 0;
};

} // namespace velmora
