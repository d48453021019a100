#include "menuViewController.h"

#include "DebugLog.h"
#include "FocusTypes.h"
#include "Http.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RunState.h"
#include "SettingsLoader.h"
#include "TextCatalogue.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDebug>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonDocument>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QVersionNumber>

namespace velmora {

namespace {
constexpr int kVersionTimeoutMs = 15'000;
const QString kStandUpAndStretch = QStringLiteral("Stand up and stretch");
} // namespace

menuViewController::menuViewController(Deps deps, QWidget* parent)
    // A tool window rather than a pop-up: pop-ups are invisible to screen readers.
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , d(std::move(deps))
{
    setObjectName(QStringLiteral("menuViewController"));
    setWindowTitle(QStringLiteral("Velmora menu"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral(R"(
        QWidget#menuViewController { background: palette(window); border: 1px solid palette(mid); }
        QPushButton[role="row"] { text-align: left; border: none; padding: 6px 14px; min-height: 20px; }
        QPushButton[role="row"]:hover, QPushButton[role="row"]:focus { background: palette(midlight); }
        QLabel#boxCheckMark { padding-right: 14px; }
        QLabel#lblTitleFocus { padding: 0 14px; font-weight: bold; }
        QLabel#lblOn { padding: 0 14px; color: palette(dark); }
    )"));

    boxFocusMode = new QWidget(this);
    boxFocusMode->setObjectName(QStringLiteral("boxFocusMode"));
    lblTitleFocus = new QLabel(boxFocusMode);
    lblTitleFocus->setObjectName(QStringLiteral("lblTitleFocus"));
    lblTitleFocus->setFixedHeight(34);
    lblOn = new QLabel(boxFocusMode);
    lblOn->setObjectName(QStringLiteral("lblOn"));
    lblOn->setFixedHeight(53 - 34);
    auto* focusBox = new QVBoxLayout(boxFocusMode);
    focusBox->setContentsMargins(0, 0, 0, 0);
    focusBox->setSpacing(0);
    focusBox->addWidget(lblTitleFocus);
    m_focusList = new QVBoxLayout;
    m_focusList->setSpacing(0);
    focusBox->addLayout(m_focusList);
    focusBox->addWidget(lblOn);
    focusBox->addStretch();

    boxStartPomodoroMode = makeRow("boxStartPomodoroMode");
    boxReactivate = makeRow("boxReactivate");
    boxPreferences = makeRow("boxPreferences");
    boxExportStatistics = makeRow("boxExportStatistics");
    boxCheckForUpdates = makeRow("boxCheckForUpdates");
    boxEnableOfficeMode = makeRow("boxEnableOfficeMode");
    boxQuit = makeRow("boxQuit");
    boxCheckMark = new QLabel(QStringLiteral("✓"), this);
    boxCheckMark->setObjectName(QStringLiteral("boxCheckMark"));
    boxCheckMark->setAccessibleName(QStringLiteral("Office mode is on"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 6, 0, 6);
    layout->setSpacing(0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(boxFocusMode);
    layout->addWidget(boxStartPomodoroMode);
    layout->addWidget(boxReactivate);
    layout->addWidget(boxPreferences);
    layout->addWidget(boxExportStatistics);
    layout->addWidget(boxCheckForUpdates);
    auto* office = new QHBoxLayout;
    office->setSpacing(0);
    office->addWidget(boxEnableOfficeMode, 1);
    office->addWidget(boxCheckMark);
    layout->addLayout(office);
    layout->addWidget(boxQuit);

    rowClicked(boxStartPomodoroMode, [this] { onStartPomodoro ? onStartPomodoro() : void(); });
    rowClicked(boxReactivate, [this] { onReactivate ? onReactivate() : void(); });
    rowClicked(boxPreferences, [this] { onPreferences ? onPreferences() : void(); });
    rowClicked(boxExportStatistics, [this] { onExportStatistics ? onExportStatistics() : void(); });
    rowClicked(boxCheckForUpdates, [this] { checkForUpdates(); });
    rowClicked(boxEnableOfficeMode, [this] { btnEnableOfficeModeClicked(); });
    rowClicked(boxQuit, [this] { onQuit ? onQuit() : void(); });

    ask = [this](const QString& text, const QString& yes, const QString& no) {
        return askModally(this, text, yes, no);
    };
    inform = [this](const QString& title, const QString& text) {
        informModally(nullptr, title, text, d.ctx.texts.buttonOkText);
    };
    viewDidLoad();
}

QPushButton* menuViewController::makeRow(const char* objectName)
{
    auto* b = new QPushButton(this);
    b->setObjectName(QLatin1String(objectName));
    b->setProperty("role", QStringLiteral("row"));
    b->setFlat(true);
    b->setFocusPolicy(Qt::StrongFocus);
    // Return presses the row that has the keyboard, as in a menu.
    b->setAutoDefault(true);
    return b;
}

// The panel goes away before the row acts, as a menu does.
void menuViewController::rowClicked(QPushButton* row, const std::function<void()>& action)
{
    connect(row, &QPushButton::clicked, this, [this, action] {
        hide();
        action();
    });
}

// A click outside closes a pop-up; the panel only goes out of sight, and a
// request to close every window is refused.
void menuViewController::closeEvent(QCloseEvent* event)
{
    event->ignore();
    hide();
}

// Like a menu, the panel goes when another window takes over or on Escape.
bool menuViewController::event(QEvent* event)
{
    if (event->type() == QEvent::WindowDeactivate && isVisible())
        hide();
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        hide();
        return true;
    }
    return QWidget::event(event);
}

QString menuViewController::menuText(const char* key, const QString& fallback) const
{
    return d.ctx.texts.text("menuInfo", key, fallback);
}

void menuViewController::viewDidLoad()
{
    boxReactivate->setText(menuText("menuItemReactivateTitle", QStringLiteral("Reactivate")));
    boxPreferences->setText(menuText("menuItemPreferencesTitle", QStringLiteral("Preferences")));
    boxExportStatistics->setText(
        menuText("menuItemExportStatisticsTitle", QStringLiteral("Export Statistics")));
    boxCheckForUpdates->setText(
        menuText("menuItemCheckForUpdatesTitle", QStringLiteral("Check for updates")));
    boxEnableOfficeMode->setText(
        menuText("menuItemEnableOfficeModeTitle", QStringLiteral("Enable office mode")));
    boxQuit->setText(menuText("menuItemQuitTitle", QStringLiteral("Quit")));
    boxStartPomodoroMode->setText(
        menuText("menuItemStartPomodoroTitle", QStringLiteral("Start Pomodoro Mode")));
    lblTitleFocus->setText(menuText("menuItemFocusTitle", QStringLiteral("Focus")));
}

void menuViewController::reloadData()
{
    // The catalogue may have arrived since the last opening.
    viewDidLoad();
    boxReactivate->setVisible(!d.ctx.state.isAppEnable);
    boxStartPomodoroMode->setVisible(!focus::isFocusModeOn(d.ctx.state.arrFocusType));
    reloadFocusRows();
    resetViewHeight();
    boxCheckMark->setVisible(d.ctx.state.isOfficeModeEnabled);
}

void menuViewController::reloadFocusRows()
{
    const QVariantList& types = d.ctx.state.arrFocusType;
    while (focusRows.size() > types.size())
        delete focusRows.takeLast();
    while (focusRows.size() < types.size()) {
        const int index = int(focusRows.size());
        QPushButton* row = makeRow("focusRow");
        row->setParent(boxFocusMode);
        row->setFixedHeight(kFocusRowHeight);
        rowClicked(row, [this, index] { onFocusRow ? onFocusRow(index) : void(); });
        m_focusList->addWidget(row);
        focusRows.append(row);
    }
    QString running;
    for (int i = 0; i < types.size(); ++i) {
        const QVariantMap type = types.at(i).toMap();
        QPixmap swatch(12, 12);
        swatch.fill(focus::colorFromString(type.value(QStringLiteral("color")).toString()));
        focusRows[i]->setIcon(QIcon(swatch));
        focusRows[i]->setText(type.value(QStringLiteral("name")).toString());
        if (type.value(QStringLiteral("isOn")).toBool())
            running = focusRows[i]->text();
    }
    lblOn->setVisible(!running.isEmpty());
    if (running.isEmpty())
        return;
    const std::optional<QDateTime> end = focusEndTime ? focusEndTime() : std::nullopt;
    const QString state =
        end ? fillTemplate(menuText("untilTimeText", QStringLiteral("On Until <TIME>")),
                           {{"<TIME>", QLocale::c().toString(end->time(), QStringLiteral("hh:mm AP"))}})
            : menuText("onText", QStringLiteral("On"));
    lblOn->setText(state);
}

int menuViewController::focusModeBoxHeight() const
{
    const int rows = int(d.ctx.state.arrFocusType.size());
    return kFocusRowHeight * rows + (focus::isFocusModeOn(d.ctx.state.arrFocusType) ? 53 : 34);
}

void menuViewController::resetViewHeight()
{
    boxFocusMode->setFixedHeight(focusModeBoxHeight());
}

QPoint menuViewController::placeFor(const QSize& panel, const QRect& trayIcon, const QPoint& cursor,
                                    const QRect& screen)
{
    QPoint at;
    if (trayIcon.isValid() && !trayIcon.isEmpty()) {
        at.setX(trayIcon.center().x() - panel.width() / 2);
        // A panel at the bottom of the screen opens the menu upwards.
        if (trayIcon.center().y() > screen.center().y())
            at.setY(trayIcon.top() - panel.height());
        else
            at.setY(trayIcon.bottom() + 1);
    } else {
        at = cursor;
        if (at.y() + panel.height() > screen.bottom())
            at.setY(cursor.y() - panel.height());
    }
    at.setX(qBound(screen.left(), at.x(), qMax(screen.left(), screen.right() + 1 - panel.width())));
    at.setY(qBound(screen.top(), at.y(), qMax(screen.top(), screen.bottom() + 1 - panel.height())));
    return at;
}

void menuViewController::popUp(const QRect& trayIcon, const QPoint& cursor)
{
    reloadData();
    adjustSize();
    const QPoint anchor = trayIcon.isValid() && !trayIcon.isEmpty() ? trayIcon.center() : cursor;
    QScreen* screen = QGuiApplication::screenAt(anchor);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(QPoint(), size());
    move(placeFor(size(), trayIcon, cursor, area));
    show();
    raise();
    activateWindow();
    // The keyboard starts on the first row.
    if (!focusRows.isEmpty())
        focusRows.first()->setFocus(Qt::PopupFocusReason);
}

// --- office mode ------------------------------------------------------------------

void menuViewController::btnEnableOfficeModeClicked()
{
    RunState& state = d.ctx.state;
    if (state.isOfficeModeEnabled) {
        state.isOfficeModeEnabled = false;
        boxCheckMark->hide();
        d.ctx.preferences.setValue(keys::kUserdefaultsOfficeModeEnabled, false);
        return;
    }
    const bool anyOfficeFriendly =
        std::any_of(state.arrAllbreakActivities.cbegin(), state.arrAllbreakActivities.cend(),
                    [](const breakActivity& a) { return a.isOfficeFriendly; });
    if (anyOfficeFriendly) {
        enableOfficeMode();
        return;
    }
    const bool add =
        ask(menuText("noOfficeFriendlyActivityAlertText",
                     QStringLiteral("You don't have any office friendly break activities. Do you "
                                    "want me to add one for you to stand up and stretch for 20 "
                                    "seconds?")),
            menuText("noOfficeFriendlyActivityButtonFirstText", QStringLiteral("Yeah sounds good")),
            menuText("noOfficeFriendlyActivityButtonSecondText",
                     QStringLiteral("No I'm a machine! I don't need breaks")));
    if (!add)
        return;
    addOfficeFriendlyActivityInSettings();
    enableOfficeMode();
}

void menuViewController::enableOfficeMode()
{
    inform(
        menuText("officeModeEnabledSuccessfullyText",
                 QStringLiteral("Ok! I'll just prompt you to do activities that won't weird other people out "
                                "(doing handstand pushups in the office might raise a few eyebrows).")),
        QString());
    d.ctx.state.isOfficeModeEnabled = true;
    boxCheckMark->show();
    d.ctx.preferences.setValue(keys::kUserdefaultsOfficeModeEnabled, true);
}

void menuViewController::addOfficeFriendlyActivityInSettings()
{
    QJsonParseError error{};
    const QJsonDocument parsed =
        QJsonDocument::fromJson(settingsDocumentText(d.ctx.preferences, d.packagedSettingsPath), &error);
    if (error.error != QJsonParseError::NoError)
        qDebug() << "settings document:" << error.errorString();
    // A document that is no dictionary counts as an empty one.
    QJsonObject document = parsed.object();

    const QJsonObject stretch{{QStringLiteral("name"), kStandUpAndStretch},
                              {QStringLiteral("durationSeconds"), 20},
                              {QStringLiteral("isOfficeFriendly"), true}};
    if (document.value(QStringLiteral("breakActivities")).isArray()) {
        QJsonArray activities = document.value(QStringLiteral("breakActivities")).toArray();
        activities.append(stretch);
        document.insert(QStringLiteral("breakActivities"), activities);
    }
    // The running program takes the new activity at once.
    d.ctx.state.arrAllbreakActivities.append(decodeBreakActivity(stretch));

    const QByteArray text = QJsonDocument(document).toJson(QJsonDocument::Indented);
    d.ctx.preferences.setValue(keys::kUserdefaultsSelectedJson, QString::fromUtf8(text));
}

// --- updates ----------------------------------------------------------------------

void menuViewController::checkForUpdates()
{
    const QString title = menuText("menuItemCheckForUpdatesTitle", QStringLiteral("Check for updates"));
    if (d.configServer.isEmpty()) {
        inform(title, QStringLiteral("%1 %2 is installed. Updates come from your package manager.")
                          .arg(d.ctx.texts.appName, QCoreApplication::applicationVersion()));
        return;
    }
    const QUrl url = serverAddress(d.configServer, d.ctx.texts.text("deployment", "updateVersionPath",
                                                                    QStringLiteral("/config/version.json")));
    d.ctx.log.addLog(QStringLiteral("Checking for updates"));
    d.http.get(url, kVersionTimeoutMs, this,
               [this](const HttpReply& reply) { versionArrived(reply.status, reply.body, reply.error); });
}

std::optional<VersionAnswer> readVersionAnswer(const QByteArray& body)
{
    const QJsonObject document = QJsonDocument::fromJson(body).object();
    const QString latest = document.value(QStringLiteral("version")).toString();
    if (latest.isEmpty())
        return std::nullopt;
    return VersionAnswer{latest, document.value(QStringLiteral("url")).toString()};
}

bool isNewerRelease(const QString& latest, const QString& installed)
{
    return QVersionNumber::fromString(latest) > QVersionNumber::fromString(installed);
}

void menuViewController::versionArrived(int status, const QByteArray& body, const QString& error)
{
    const QString title = menuText("menuItemCheckForUpdatesTitle", QStringLiteral("Check for updates"));
    const std::optional<VersionAnswer> answer = readVersionAnswer(body);
    if (status != 200 || !answer) {
        const QString why = !error.isEmpty() ? error
                            : status != 200  ? QStringLiteral("the server answered %1").arg(status)
                                             : QStringLiteral("the answer holds no version");
        inform(title, QStringLiteral("The check for updates did not succeed: %1.").arg(why));
        return;
    }
    const QString installed = QCoreApplication::applicationVersion();
    if (isNewerRelease(answer->latest, installed)) {
        QString text = QStringLiteral("%1 %2 is available; you have %3.")
                           .arg(d.ctx.texts.appName, answer->latest, installed);
        if (!answer->url.isEmpty())
            text += u'\n' + answer->url;
        inform(title, text);
        return;
    }
    inform(title, QStringLiteral("%1 %2 is the newest version.").arg(d.ctx.texts.appName, installed));
}

} // namespace velmora
