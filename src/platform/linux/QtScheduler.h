#pragma once

#include "Scheduler.h"

#include <QHash>
#include <QObject>
#include <QPointer>

class QTimer;

namespace velmora {

// Every timer is a QTimer owned by the scheduler, so the scheduler must live on
// the main thread.
class QtScheduler : public QObject, public Scheduler
{
    Q_OBJECT

public:
    explicit QtScheduler(QObject* parent = nullptr);
    ~QtScheduler() override;

    TimerId singleShot(qint64 ms, QObject* context, std::function<void()> callback) override;
    TimerId repeating(qint64 ms, QObject* context, std::function<void()> callback) override;
    void cancel(TimerId id) override;
    bool isActive(TimerId id) const override;

private:
    struct Entry
    {
        QTimer* timer = nullptr;
        QPointer<QObject> context;
        bool hasContext = false;
        std::function<void()> callback;
        QMetaObject::Connection contextGone;
    };

    TimerId start(qint64 ms, bool repeat, QObject* context, std::function<void()> callback);
    void fire(TimerId id);
    void discard(Entry& entry);

    QHash<TimerId, Entry> m_entries;
    TimerId m_nextId = 1;
};

} // namespace velmora
