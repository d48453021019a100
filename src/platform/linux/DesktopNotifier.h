#pragma once

#include "Notifier.h"

struct ca_context;

namespace velmora {

// Notifications through org.freedesktop.Notifications; sounds through libcanberra,
// which plays on whatever sound server the desktop runs.
class DesktopNotifier : public Notifier
{
public:
    // The program's own sounds, "<name>.oga" or "<name>.wav", are looked up in
    // soundsDirectory; a name without a file there is played as a sound-theme event.
    explicit DesktopNotifier(const QString& soundsDirectory = {});
    ~DesktopNotifier() override;
    DesktopNotifier(const DesktopNotifier&) = delete;
    DesktopNotifier& operator=(const DesktopNotifier&) = delete;

    void notify(const QString& title, const QString& body = {}) override;
    void playSound(const QString& name) override;

private:
    QString soundFile(const QString& name) const;

    QString m_soundsDirectory;
    ca_context* m_canberra = nullptr;
};

} // namespace velmora
