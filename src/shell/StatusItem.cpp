#include "StatusItem.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QPixmap>
#include <QSystemTrayIcon>

namespace velmora {

StatusItem::StatusItem(QObject* parent)
    : QObject(parent)
{
    m_tray = new QSystemTrayIcon(this);
    connect(m_tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (m_clickable && reason == QSystemTrayIcon::Trigger)
            Q_EMIT clicked();
    });
    apply();
    m_tray->show();
}

bool StatusItem::isVisibleInTray() const
{
    return m_tray->isVisible() && QSystemTrayIcon::isSystemTrayAvailable();
}

QRect StatusItem::trayGeometry() const
{
    return m_tray->geometry();
}

bool StatusItem::isTrayAvailable()
{
    return QSystemTrayIcon::isSystemTrayAvailable();
}

// The clock, and beside it the title whole: trays that show wider icons show the
// whole word, the others scale the icon down.
QIcon StatusItem::paintLook(const QString& title, const QColor& background, const QColor& border)
{
    QIcon icon;
    for (const int size : {22, 44}) {
        const qreal unit = size / 22.0;
        QFont font;
        font.setPixelSize(int(11 * unit));
        font.setBold(true);
        const int textWidth = title.isEmpty() ? 0 : QFontMetrics(font).horizontalAdvance(title);
        const int width = title.isEmpty() ? size : size + textWidth + int(6 * unit);
        QPixmap pixmap(width, size);
        pixmap.fill(Qt::transparent);
        {
            QPainter p(&pixmap);
            p.setRenderHint(QPainter::Antialiasing);
            const QRectF frame(unit, unit, width - 2 * unit, size - 2 * unit);
            if (background.alpha() > 0) {
                p.setPen(Qt::NoPen);
                p.setBrush(background);
                p.drawRoundedRect(frame, 4 * unit, 4 * unit);
            }
            if (border.alpha() > 0) {
                p.setPen(QPen(border, 2 * unit));
                p.setBrush(Qt::NoBrush);
                p.drawRoundedRect(frame, 4 * unit, 4 * unit);
            }
            const QPixmap clock(size > 22 ? QStringLiteral(":/images/clock22@2x.png")
                                          : QStringLiteral(":/images/clock22.png"));
            const QColor ink = background.alpha() > 0 ? QColor(Qt::white) : QColor(0x20, 0x20, 0x20);
            if (!clock.isNull()) {
                p.drawPixmap(QRect(0, 0, size, size), clock);
            } else {
                p.setPen(QPen(ink, 2 * unit));
                p.drawEllipse(QRectF(4 * unit, 4 * unit, size - 8 * unit, size - 8 * unit));
            }
            if (!title.isEmpty()) {
                p.setFont(font);
                p.setPen(ink);
                p.drawText(QRectF(size, 0, textWidth + 2 * unit, size), Qt::AlignLeft | Qt::AlignVCenter,
                           title);
            }
        }
        icon.addPixmap(pixmap);
    }
    return icon;
}

void StatusItem::apply()
{
    m_tray->setIcon(paintLook(m_title, m_background, m_border));
    m_tray->setToolTip(m_title.isEmpty() ? QStringLiteral("Velmora")
                                         : QStringLiteral("Velmora — ") + m_title);
}

void StatusItem::setNormalLook()
{
    m_look = Look::Normal;
    m_title.clear();
    m_background = Qt::transparent;
    m_border = Qt::transparent;
    apply();
}

void StatusItem::setOffLook(const QString& title)
{
    m_look = Look::Off;
    m_title = title;
    m_background = Qt::transparent;
    m_border = QColor(Qt::red);
    apply();
}

void StatusItem::setCallLook(const QString& title)
{
    m_look = Look::Call;
    m_title = title;
    m_background = QColor(0x0a, 0x84, 0xff); // the desktop's usual "system blue"
    m_border = Qt::transparent;
    apply();
}

void StatusItem::setFocusLook(const QString& title, const QColor& color)
{
    m_look = Look::Focus;
    m_title = title;
    m_background = color;
    m_border = Qt::transparent;
    apply();
}

} // namespace velmora
