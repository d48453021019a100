#include "timerViewcontroller.h"

#include "Clock.h"
#include "DebugLog.h"
#include "DisplayAwake.h"
#include "DurationTexts.h"
#include "RoutineHost.h"
#include "RunState.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "ViewController.h"
#include "WebPage.h"

#include <QLabel>
#include <QRandomGenerator>
#include <QUrlQuery>
#include <QVBoxLayout>

namespace velmora {

namespace {
const QStringList newGifsNamesArray{
    QStringLiteral("Glasses-Otter-250-px_V3"), QStringLiteral("cheer_250px_trans_centered"),
    QStringLiteral("Finger-and-Sign-Otter-250px"), QStringLiteral("Weight-otter-250-px_V2"),
    QStringLiteral("Whistle-otter-250-px")};
const QString kAssertionReason = QStringLiteral("Reason for activity");
} // namespace

timerViewcontroller::timerViewcontroller(RoutineContext ctx, ViewController& main, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
    , m_main(main)
{
    setObjectName(QStringLiteral("timerViewcontroller"));
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(12);
    layout->addStretch(1);
    lblTitle = style::title(this, "lblTitle");
    imgViewGif = new QLabel(this);
    imgViewGif->setObjectName(QStringLiteral("imgViewGif"));
    imgViewGif->setAlignment(Qt::AlignCenter);
    lblTimer = new QLabel(this);
    lblTimer->setObjectName(QStringLiteral("lblTimer"));
    lblTimer->setProperty("role", QStringLiteral("clock"));
    lblTimer->setAlignment(Qt::AlignCenter);
    m_pageArea = new QWidget(this);
    auto* pageLayout = new QVBoxLayout(m_pageArea);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    m_pageArea->hide();
    layout->addWidget(lblTitle);
    layout->addWidget(m_pageArea, 3);
    layout->addWidget(imgViewGif);
    layout->addWidget(lblTimer);
    layout->addStretch(1);
}

timerViewcontroller::~timerViewcontroller()
{
    pauseTimer();
}

QString timerViewcontroller::embedAddress(QString url)
{
    url.replace(QLatin1String("watch?v="), QLatin1String("embed/"));
    url += url.contains(u'?') ? QStringLiteral("&autoplay=1") : QStringLiteral("?autoplay=1");
    return url;
}

void timerViewcontroller::ensureWebView()
{
    if (webView)
        return;
    QWidget* view = webpage::create(m_pageArea);
    if (!view)
        return;
    view->setObjectName(QStringLiteral("webView"));
    view->setContextMenuPolicy(Qt::NoContextMenu);
    m_pageArea->layout()->addWidget(view);
    webView = view;
}

bool timerViewcontroller::isWebViewShown() const
{
    return webView && !m_pageArea->isHidden();
}

void timerViewcontroller::loadWebViewTo(const std::optional<QString>& url)
{
    if (!url) {
        m_pageArea->hide();
        return;
    }
    m_pageArea->show();
    const QUrl address(embedAddress(*url), QUrl::StrictMode);
    if (!address.isValid() || address.scheme().isEmpty())
        return;
    ensureWebView();
    m_loadedUrl = address;
    webpage::load(webView, address);
    armPageTimeout();
}

void timerViewcontroller::armPageTimeout()
{
    if (m_pageTimeout)
        c.scheduler.cancel(*m_pageTimeout);
    m_pageTimeout.reset();
    if (!webView)
        return;
    m_pageTimeout = c.scheduler.singleShot(webpage::kLoadTimeoutMs, this, [this] {
        m_pageTimeout.reset();
        if (webpage::stopLoading(webView))
            c.log.addLog(QStringLiteral("The page did not load within 60 seconds; it was stopped."));
    });
}

void timerViewcontroller::loadBlankUrl()
{
    if (!webView)
        return;
    m_loadedUrl = QUrl(QStringLiteral("about:blank"));
    webpage::load(webView, m_loadedUrl);
    armPageTimeout();
}

void timerViewcontroller::showAnimation()
{
    if (c.state.kIsReducedMotion) {
        style::stopAnimation(imgViewGif);
        return;
    }
    const QString name = newGifsNamesArray.at(int(c.random.bounded(quint32(newGifsNamesArray.size()))));
    style::showAnimation(imgViewGif, name, c.state.kIsReducedMotion);
}

void timerViewcontroller::setTitleAndStart(const QString& name, int duration, bool fromZero)
{
    lblTitle->setText(fillTemplate(c.texts.doSomeActivityText, {{"<ACTIVITY>", name}}));
    if (fromZero)
        currentTimer = 0;
    totalDuration = duration;
    lblTimer->setText(clockText(totalDuration - currentTimer));
    if (timer)
        c.scheduler.cancel(*timer);
    timer = c.scheduler.repeating(1000, this, [this] { performTimerCount(); });
}

void timerViewcontroller::startTimerHabit(int durationSeconds, const std::optional<QString>& url,
                                          const QString& name, const habit& currentHabit)
{
    c.displayAwake.take(kAssertionReason);
    if (currentHabit.openSpecificApps) {
        // The item is done away from the lock, in the programs it allows.
        c.state.currentHabitPlaying = currentHabit;
        c.host.setMainWindowVisible(false);
        c.host.startTimerActivitiesAllowedApp();
        c.host.hideBlankWindowInSecondaryMonitor();
    } else {
        c.state.currentHabitPlaying.reset();
    }
    showAnimation();
    c.state.lastActivityPerformedTime = c.clock.now();
    loadWebViewTo(url);
    setTitleAndStart(name, durationSeconds, true);
}

void timerViewcontroller::startTimerActivity(int durationInSeconds, const QString& name,
                                             const std::optional<QString>& url,
                                             const std::optional<QString>& question,
                                             const breakActivity& currentActivity, bool logQuantity)
{
    c.displayAwake.take(kAssertionReason);
    logActivityQuantity = logQuantity;
    if (currentActivity.openSpecificApps) {
        c.state.currentActivityPlaying = currentActivity;
        c.host.setMainWindowVisible(false);
        c.host.startTimerActivitiesAllowedApp();
        c.host.hideBlankWindowInSecondaryMonitor();
    } else {
        c.state.currentActivityPlaying.reset();
    }
    showAnimation();
    logQuantityQuestion = question;
    currentActicityTitle = name;
    currentDurationInSeconds = durationInSeconds;
    currentUrl = url;
    c.state.lastActivityPerformedTime = c.clock.now();
    loadWebViewTo(url);
    setTitleAndStart(name, durationInSeconds, true);
}

void timerViewcontroller::startBreathing()
{
    showAnimation();
    habit intro;
    intro.name = QStringLiteral("mindful breathing");
    intro.durationSeconds = 60;
    intro = c.state.introActivity.value_or(intro);
    std::optional<QString> url;
    if (!intro.urlsArray.isEmpty())
        url = intro.urlsArray.at(int(c.random.bounded(quint32(intro.urlsArray.size()))));
    loadWebViewTo(url);
    setTitleAndStart(intro.name, intro.durationSeconds, true);
}

void timerViewcontroller::resumeTimerHabit(int durationSeconds, const std::optional<QString>& url,
                                           const QString& name)
{
    c.displayAwake.take(kAssertionReason);
    loadWebViewTo(url);
    setTitleAndStart(name, durationSeconds, false);
}

void timerViewcontroller::resumeTimerActivity(int durationInSeconds, const QString& name,
                                              const std::optional<QString>& url)
{
    resumeTimerHabit(durationInSeconds, url, name);
}

bool timerViewcontroller::hasLiveTimer() const
{
    return timer && c.scheduler.isActive(*timer);
}

void timerViewcontroller::pauseTimer()
{
    if (timer)
        c.scheduler.cancel(*timer);
    timer.reset();
}

void timerViewcontroller::performTimerCount()
{
    ++currentTimer;
    lblTimer->setText(clockText(totalDuration - currentTimer));
    if (currentTimer < totalDuration)
        return;
    pauseTimer();
    c.displayAwake.release();
    // The controller moves on in a later turn, after this tick has unwound.
    c.scheduler.post(this, [this] { finishItem(); });
}

void timerViewcontroller::finishItem()
{
    loadBlankUrl();
    switch (c.state.currentState) {
    case CURRENTSTATE::_MORNING_HABIT_:
        m_main.morningHabitOver();
        break;
    case CURRENTSTATE::_EVENING_HABIT_:
        m_main.eveningHabitOver();
        break;
    case CURRENTSTATE::_ACTIVITY_:
        m_main.activityOver();
        break;
    case CURRENTSTATE::_BREATHING_:
        m_main.breathingOver();
        break;
    default:
        break;
    }
}

} // namespace velmora
