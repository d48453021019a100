#pragma once

#include <QtTest>
#include <QtWidgets>

// Lays the lock out on the smallest screen it serves and on a large one, keeps a picture of
// each in build/test-output/lock-screens, and fails on anything cut off: a widget outside the
// window, a text taller or wider than its label or button.
inline void checkLockLayout(QWidget& lock, const QString& screen)
{
    const QString folder =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../test-output/lock-screens/");
    QDir().mkpath(folder);
    for (const QSize size : {QSize(800, 600), QSize(2560, 1440)}) {
        lock.resize(size);
        QCoreApplication::sendPostedEvents();
        lock.layout()->activate();
        const QString name = QStringLiteral("%1-%2x%3").arg(screen).arg(size.width()).arg(size.height());
        QVERIFY(lock.grab().save(folder + name + QStringLiteral(".png")) && lock.size() == size);
        for (QWidget* w : lock.findChildren<QWidget*>()) {
            const auto* label = qobject_cast<QLabel*>(w);
            const bool wrapped = label && label->wordWrap();
            const QSize needed = wrapped ? QSize(0, label->heightForWidth(w->width())) : w->sizeHint();
            if (w->isVisibleTo(&lock) && (label ? !label->text().isEmpty() : w->inherits("QAbstractButton")))
                QVERIFY2(lock.rect().contains(QRect(w->mapTo(&lock, QPoint()), w->size())) &&
                             needed.width() <= w->width() && needed.height() <= w->height(),
                         qPrintable(name + u' ' + w->objectName() + QStringLiteral(" is cut off")));
        }
    }
}
