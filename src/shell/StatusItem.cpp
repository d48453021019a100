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

QIcon StatusItem::paintLook(const QString& title, const QColor& background, const QColor& border)
{
    QIcon icon;
    for (const int size : {22, 44}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        {
            QPainter p(&pixmap);
            p.setRenderHint(QPainter::Antialiasing);
            const qreal unit = size / 22.0;
            const QRectF frame(unit, unit, size - 2 * unit, size - 2 * unit);
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
            if (title.isEmpty()) {
                if (!clock.isNull())
                    p.drawPixmap(QRect(0, 0, size, size), clock);
                else {
                    p.setPen(QPen(ink, 2 * unit));
                    p.drawEllipse(frame.adjusted(3 * unit, 3 * unit, -3 * unit, -3 * unit));
                }
            } else {
                // Too small for the clock and a word: the word tells the state.
                QFont f;
                f.setPixelSize(int(7 * unit));
                f.setBold(true);
                // "FOCUS" must fit whole: the font shrinks to the frame's width.
                const QString word = title.left(5);
                const qreal room = frame.width() - 2 * unit;
                const int wide = QFontMetrics(f).horizontalAdvance(word);
                if (wide > room)
                    f.setPixelSize(qMax(4, int(f.pixelSize() * room / wide)));
                p.setFont(f);
                p.setPen(ink);
                p.drawText(frame, Qt::AlignCenter, word);
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
