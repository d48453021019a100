#pragma once

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QLayout>
#include <QtTest>

namespace velmora::test {

// Lays the lock out on the smallest screen it serves and on a large one, keeps a picture
// of each in build/test-output/lock-screens, and fails on anything cut off: a widget
// outside the window, a text taller or wider than its label or button.
inline void checkLockLayout(QWidget& lock, const QString& screen)
{
    const QString folder =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../test-output/lock-screens");
    QDir().mkpath(folder);
    const QSize before = lock.size();
    for (const QSize size : {QSize(800, 600), QSize(2560, 1440)}) {
        lock.resize(size);
        lock.layout()->activate();
        QCoreApplication::sendPostedEvents();
        const QString name = QStringLiteral("%1-%2x%3").arg(screen).arg(size.width()).arg(size.height());
        lock.grab().save(QStringLiteral("%1/%2.png").arg(folder, name));
        QVERIFY2(lock.size() == size, qPrintable(name + QStringLiteral(" does not fit the screen")));
        for (QWidget* w : lock.findChildren<QWidget*>()) {
            if (!w->isVisibleTo(&lock) || qobject_cast<QAbstractScrollArea*>(w->parentWidget()) ||
                (w->parentWidget() && qobject_cast<QAbstractScrollArea*>(w->parentWidget()->parentWidget())))
                continue;
            const QRect at(w->mapTo(&lock, QPoint()), w->size());
            const QString what = name + u' ' + w->metaObject()->className() + u' ' + w->objectName();
            QVERIFY2(lock.rect().contains(at), qPrintable(what + QStringLiteral(" lies outside the window")));
            QSize needed;
            if (auto* label = qobject_cast<QLabel*>(w); label && !label->text().isEmpty())
                needed =
                    label->wordWrap() ? QSize(0, label->heightForWidth(label->width())) : label->sizeHint();
            else if (auto* button = qobject_cast<QAbstractButton*>(w))
                needed = button->sizeHint();
            QVERIFY2(needed.width() <= w->width() && needed.height() <= w->height(),
                     qPrintable(what + QStringLiteral(" is cut off")));
        }
    }
    lock.resize(before);
}

} // namespace velmora::test
