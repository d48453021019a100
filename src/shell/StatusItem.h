#pragma once

#include <QColor>
#include <QIcon>
#include <QObject>
#include <QRect>
#include <QString>

class QSystemTrayIcon;

namespace velmora {

// The program's only permanent face: a tray icon whose look tells the state.
// Trays on Linux show icons only, so the look is painted into the icon itself
// and the title also goes into the tool tip.
class StatusItem : public QObject
{
    Q_OBJECT
public:
    enum class Look
    {
        Normal,
        Off,
        Focus,
        Call
    };

    explicit StatusItem(QObject* parent = nullptr);

    void setNormalLook();
    void setOffLook(const QString& title);
    void setCallLook(const QString& title);
    void setFocusLook(const QString& title, const QColor& color);

    Look look() const { return m_look; }
    QString title() const { return m_title; }
    QColor background() const { return m_background; }
    QColor border() const { return m_border; }

    // Clicks reach the program only once it is ready for them.
    void setClickable(bool clickable) { m_clickable = clickable; }
    bool isClickable() const { return m_clickable; }

    bool isVisibleInTray() const;
    // Where the icon sits on the screen; empty when the tray does not say.
    QRect trayGeometry() const;
    static bool isTrayAvailable();
    static QIcon paintLook(const QString& title, const QColor& background, const QColor& border);

Q_SIGNALS:
    void clicked();

private:
    void apply();

    QSystemTrayIcon* m_tray = nullptr;
    Look m_look = Look::Normal;
    QString m_title;
    QColor m_background = Qt::transparent;
    QColor m_border = Qt::transparent;
    bool m_clickable = false;
};

} // namespace velmora
