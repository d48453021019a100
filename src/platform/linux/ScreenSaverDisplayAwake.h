#pragma once

#include "DisplayAwake.h"

#include <optional>

namespace velmora {

// An org.freedesktop.ScreenSaver inhibition on the session bus. The desktop drops
// it by itself when this process ends.
class ScreenSaverDisplayAwake : public DisplayAwake
{
public:
    explicit ScreenSaverDisplayAwake(const QString& applicationName = QStringLiteral("Velmora"));
    ~ScreenSaverDisplayAwake() override;
    ScreenSaverDisplayAwake(const ScreenSaverDisplayAwake&) = delete;
    ScreenSaverDisplayAwake& operator=(const ScreenSaverDisplayAwake&) = delete;

    void take(const QString& reason) override;
    void release() override;
    // True from take() to release(), whether or not a screen saver service answered.
    bool isHeld() const override;

private:
    QString m_applicationName;
    bool m_held = false;
    // Where the inhibition was granted and its cookie.
    QString m_path;
    std::optional<uint> m_cookie;
};

} // namespace velmora
