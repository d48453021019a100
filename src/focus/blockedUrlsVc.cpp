#include "blockedUrlsVc.h"

#include "addWebUrlVc.h"
#include "BrowserTabs.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace velmora {

blockedUrlsVc::blockedUrlsVc(FocusPreferencesContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("blockedUrlsVc"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(style::dialogStyleSheet());
    lblTitle = style::title(this, "lblTitle");
    lblTitle->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    tblViewBlockedUrls = new QListWidget(this);
    tblViewBlockedUrls->setObjectName(QStringLiteral("tblViewBlockedUrls"));
    tblViewBlockedUrls->setIconSize(QSize(18, 18));
    btnAddUrl = style::quietButton(this, "btnAddUrl");
    btnRemoveUrl = style::quietButton(this, "btnRemoveUrl");
    addWebUrlVcObj = new addWebUrlVc(c, this);
    lblBrowsers = new QLabel(this);
    tblViewBrowsers = new QListWidget(this);
    tblViewBrowsers->setObjectName(QStringLiteral("tblViewBrowsers"));
    tblViewBrowsers->setWordWrap(true);
    tblViewBrowsers->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(btnAddUrl);
    buttons->addWidget(btnRemoveUrl);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblTitle);
    layout->addWidget(tblViewBlockedUrls, 1);
    layout->addLayout(buttons);
    layout->addWidget(lblBrowsers);
    layout->addWidget(tblViewBrowsers);
    if (c.browserTabs)
        connect(c.browserTabs, &BrowserTabs::connectionsChanged, this, [this] {
            if (isVisible())
                reloadBrowsers();
        });

    connect(tblViewBlockedUrls, &QListWidget::itemSelectionChanged, this,
            [this] { btnRemoveUrl->setEnabled(!tblViewBlockedUrls->selectedItems().isEmpty()); });
    connect(tblViewBlockedUrls, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        tableRowAllowedUrlsDoubleClicked(tblViewBlockedUrls->row(item));
    });
    connect(btnAddUrl, &QPushButton::clicked, this, [this] { btnAddUrlClicked(); });
    connect(btnRemoveUrl, &QPushButton::clicked, this, [this] { btnRemoveUrlClicked(); });
    connect(addWebUrlVcObj, &addWebUrlVc::urlSaved, this, [this](int row) {
        reloadData();
        tblViewBlockedUrls->setCurrentRow(row);
        tblViewBlockedUrls->scrollToItem(tblViewBlockedUrls->item(row));
    });
}

void blockedUrlsVc::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    viewWillAppear();
}

void blockedUrlsVc::viewWillAppear()
{
    style::setText(lblTitle,
                   c.texts.text("blockedUrlsViewInfo", "title", QStringLiteral("Always Blocked URLs")));
    tblViewBlockedUrls->setAccessibleName(lblTitle->text());
    const QString add = c.texts.text("focusPreferencesInfo", "toolTipAdd", QStringLiteral("Add"));
    const QString remove = c.texts.text("focusPreferencesInfo", "toolTipRemove", QStringLiteral("Remove"));
    style::setText(btnAddUrl, add);
    btnAddUrl->setToolTip(add);
    style::setText(btnRemoveUrl, remove);
    btnRemoveUrl->setToolTip(remove);
    reloadData();
    reloadBrowsers();
}

void blockedUrlsVc::reloadBrowsers()
{
    static const QList<std::pair<QString, QString>> browsers = {
        {QStringLiteral("firefox"), QStringLiteral("Firefox")},
        {QStringLiteral("chromium"), QStringLiteral("Chromium")},
        {QStringLiteral("google-chrome"), QStringLiteral("Google Chrome")},
        {QStringLiteral("brave"), QStringLiteral("Brave")},
        {QStringLiteral("edge"), QStringLiteral("Microsoft Edge")},
        {QStringLiteral("vivaldi"), QStringLiteral("Vivaldi")}};
    const QString title = c.texts.text("blockedUrlsViewInfo", "browsersTitle",
                                       QStringLiteral("Browsers with the Velmora extension"));
    lblBrowsers->setText(title);
    tblViewBrowsers->setAccessibleName(title);
    const QList<BrowserConnection> connections =
        c.browserTabs ? c.browserTabs->connections() : QList<BrowserConnection>();
    const QString yes = c.texts.text("blockedUrlsViewInfo", "browserConnected", QStringLiteral("connected"));
    // What the user still has to do where the package installed the extension:
    // the browsers add it at their next start, and Chromium's family may ask first.
    const QString noChromium = c.texts.text(
        "blockedUrlsViewInfo", "browserNotConnected",
        QStringLiteral("not connected: restart the browser, and where it says “Velmora” was added, click "
                       "“Enable extension”"));
    const QString noFirefox = c.texts.text(
        "blockedUrlsViewInfo", "firefoxNotConnected",
        QStringLiteral(
            "not connected: restart Firefox (Mozilla's own Firefox builds take only signed add-ons: "
            "see “Browsers” in the README)"));
    const QString inPrivate = c.texts.text("blockedUrlsViewInfo", "browserPrivateAllowed",
                                           QStringLiteral("also in private windows"));
    const QString notInPrivate =
        c.texts.text("blockedUrlsViewInfo", "browserPrivateNotAllowed",
                     QStringLiteral("not in private windows: they are hidden while addresses are blocked"));
    tblViewBrowsers->clear();
    const auto addRow = [this](const QString& text) {
        auto* item = new QListWidgetItem(text, tblViewBrowsers);
        item->setData(Qt::AccessibleTextRole, text);
        item->setToolTip(text);
    };
    QStringList shown;
    // Every running browser with the extension, by the name it gives itself.
    for (const BrowserConnection& connection : connections) {
        QString name = connection.product;
        for (const auto& [family, known] : browsers) {
            if (name.isEmpty() && family == connection.browser)
                name = known;
        }
        if (name.isEmpty())
            name = connection.browser;
        QString text = name + QStringLiteral(": ") + yes;
        if (connection.privateAllowed)
            text += QStringLiteral(", ") + (*connection.privateAllowed ? inPrivate : notInPrivate);
        if (!shown.contains(text))
            addRow(text);
        shown << text << connection.browser;
    }
    for (const auto& [family, name] : browsers) {
        if (!shown.contains(family))
            addRow(name + QStringLiteral(": ") +
                   (family == QLatin1String("firefox") ? noFirefox : noChromium));
    }
    // Every browser shows without scrolling, whatever the font; the longer hints wrap.
    int height = 2 * tblViewBrowsers->frameWidth();
    for (int row = 0; row < tblViewBrowsers->count(); ++row)
        height += tblViewBrowsers->sizeHintForRow(row);
    tblViewBrowsers->setFixedHeight(height);
}

void blockedUrlsVc::reloadData()
{
    tblViewBlockedUrls->clear();
    const QIcon icon = QIcon::fromTheme(QStringLiteral("applications-internet"),
                                        style()->standardIcon(QStyle::SP_DriveNetIcon));
    for (const QString& url : std::as_const(c.arrBlockedUrls)) {
        auto* item = new QListWidgetItem(icon, url, tblViewBlockedUrls);
        item->setData(Qt::AccessibleTextRole, url);
    }
    btnRemoveUrl->setEnabled(false);
}

void blockedUrlsVc::openSheet(bool isAdding, int row)
{
    addWebUrlVcObj->viewLoddedFromFocusType = false;
    addWebUrlVcObj->isAdding = isAdding;
    addWebUrlVcObj->currentRow = row;
    addWebUrlVcObj->viewWillAppear();
    addWebUrlVcObj->open();
}

void blockedUrlsVc::btnAddUrlClicked()
{
    openSheet(true, qMax(0, tblViewBlockedUrls->currentRow()));
}

void blockedUrlsVc::tableRowAllowedUrlsDoubleClicked(int row)
{
    if (row >= 0 && row < c.arrBlockedUrls.size())
        openSheet(false, row);
}

void blockedUrlsVc::btnRemoveUrlClicked()
{
    const int row = tblViewBlockedUrls->currentRow();
    if (row < 0 || row >= c.arrBlockedUrls.size() || tblViewBlockedUrls->selectedItems().isEmpty())
        return;
    c.arrBlockedUrls.removeAt(row);
    c.preferences.setValue(keys::kUserdefaultsArrBlockedUrls, c.arrBlockedUrls);
    reloadData();
}

} // namespace velmora
