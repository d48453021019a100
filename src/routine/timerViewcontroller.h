#pragma once

#include "RoutineContext.h"
#include "Scheduler.h"
#include "SettingsRecords.h"

#include <optional>
#include <QUrl>
#include <QWidget>

class QLabel;
class QStackedLayout;

namespace velmora {

class ViewController;

// The screen of a running item: counts it down second by second, plays its page,
// keeps the display awake while it counts, and at zero tells the controller.
class timerViewcontroller : public QWidget
{
    Q_OBJECT
public:
    timerViewcontroller(RoutineContext ctx, ViewController& main, QWidget* parent = nullptr);
    ~timerViewcontroller() override;

    void startTimerHabit(int durationSeconds, const std::optional<QString>& url, const QString& name,
                         const habit& currentHabit);
    void startTimerActivity(int durationInSeconds, const QString& name, const std::optional<QString>& url,
                            const std::optional<QString>& logQuantityQuestion,
                            const breakActivity& currentActivity, bool logQuantity);
    void startBreathing();
    void resumeTimerHabit(int durationSeconds, const std::optional<QString>& url, const QString& name);
    void resumeTimerActivity(int durationInSeconds, const QString& name, const std::optional<QString>& url);
    void loadWebViewTo(const std::optional<QString>& url);
    void loadBlankUrl();
    void performTimerCount();

    // Stops the count where it stands (the abort button); the count resumes from there.
    void pauseTimer();
    bool hasLiveTimer() const;
    bool isWebViewShown() const;
    // The address last handed to the web view, for the curious and for tests.
    QUrl loadedUrl() const { return m_loadedUrl; }
    // "watch?v=" becomes "embed/" and the autoplay key is added.
    static QString embedAddress(QString url);

    int currentTimer = 0;
    int totalDuration = 0;
    QString currentActicityTitle;
    int currentDurationInSeconds = 0;
    std::optional<QString> currentUrl;
    std::optional<QString> logQuantityQuestion;
    bool logActivityQuantity = false;

    QWidget* webView = nullptr; // made on first need: a day without pages never loads the engine
    QLabel* lblTimer = nullptr;
    QLabel* lblTitle = nullptr;
    QLabel* imgViewGif = nullptr;

private:
    void showAnimation();
    void setTitleAndStart(const QString& name, int duration, bool fromZero);
    void ensureWebView();
    void finishItem();
    // Gives up a page that has not loaded within its time.
    void armPageTimeout();

    RoutineContext c;
    ViewController& m_main;
    std::optional<TimerId> timer;
    std::optional<TimerId> m_pageTimeout;
    QWidget* m_pageArea = nullptr;
    QUrl m_loadedUrl;
};

} // namespace velmora
