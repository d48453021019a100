#include "focusPreferencesVc.h"

#include "addApplicationVc.h"
#include "addFocusTypeVc.h"
#include "addWebUrlVc.h"
#include "FocusTypeList.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "Workspace.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>

namespace velmora {

namespace {

QListWidget* makeList(QWidget* parent, const char* objectName)
{
    auto* list = new QListWidget(parent);
    list->setObjectName(QLatin1String(objectName));
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setIconSize(QSize(18, 18));
    list->setTextElideMode(Qt::ElideRight);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return list;
}

// A row's text is also what a screen reader reads for it.
QListWidgetItem* addRow(QListWidget* list, const QIcon& icon, const QString& text)
{
    auto* item = new QListWidgetItem(icon, text, list);
    item->setData(Qt::AccessibleTextRole, text);
    return item;
}

QIcon swatch(const QColor& color)
{
    QPixmap pixmap(18, 18);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(color);
    painter.setPen(QColor(0xe6, 0xeb, 0xf0));
    painter.drawRoundedRect(QRectF(1.5, 1.5, 15, 15), 4, 4);
    return QIcon(pixmap);
}

void selectAndScroll(QListWidget* list, int row)
{
    if (row < 0 || row >= list->count())
        return;
    list->setCurrentRow(row);
    list->scrollToItem(list->item(row));
}

} // namespace

focusPreferencesVc::focusPreferencesVc(FocusPreferencesContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("focusPreferencesVc"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(style::dialogStyleSheet());
    auto* layout = new QHBoxLayout(this);
    auto* side = new QWidget(this);
    buildTypeList(side);
    layout->addWidget(side, 3);
    buildDetail();
    layout->addWidget(detailView, 5);
    layout->addWidget(boxEmptyFocusType, 5);

    addFocusTypeVcObj = new addFocusTypeVc(c, this);
    addWebUrlVcObj = new addWebUrlVc(c, this);
    addApplicationVcObj = new addApplicationVc(c.workspace, c.texts, this);
    connect(addFocusTypeVcObj, &addFocusTypeVc::focusTypeSaved, this,
            [this](int row, bool wasAdding) { focusTypeSaved(row, wasAdding); });
    connect(addWebUrlVcObj, &addWebUrlVc::urlSaved, this, [this](int row) {
        reloadUrlsTable();
        selectAndScroll(tblViewAllowedUrls, row);
    });
    connect(addApplicationVcObj, &addApplicationVc::applicationsChosen, this,
            [this](const QStringList& files) { appsChosen(files); });
    // The switch follows blocks that start and end while the tab is open.
    connect(&c.focusTypes, &FocusTypeList::typesChanged, this, [this] {
        if (isVisible())
            syncToggle();
    });
    ask = [this](const QString& message, const QString& yes, const QString& no) {
        return askModally(window(), message, yes, no);
    };
    inform = [this](const QString& title, const QString& message) {
        informModally(window(), title, message, c.texts.buttonOkText);
    };
}

void focusPreferencesVc::buildTypeList(QWidget* side)
{
    tblViewFocusType = makeList(side, "tblViewFocusType");
    tblViewFocusType->setContextMenuPolicy(Qt::CustomContextMenu);
    btnAddFocusType = style::quietButton(side, "btnAddFocusType");
    btnRemoveFocusType = style::quietButton(side, "btnRemoveFocusType");
    btnDuplicateFocusType = style::quietButton(side, "btnDuplicateFocusType");
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(btnAddFocusType);
    buttons->addWidget(btnRemoveFocusType);
    buttons->addWidget(btnDuplicateFocusType);
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tblViewFocusType, 1);
    layout->addLayout(buttons);

    connect(tblViewFocusType, &QListWidget::itemSelectionChanged, this,
            [this] { tableViewSelectionDidChange(); });
    connect(tblViewFocusType, &QListWidget::itemActivated, this,
            [this](QListWidgetItem* item) { tableRowFocusTypeDoubleClicked(tblViewFocusType->row(item)); });
    connect(tblViewFocusType, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& pos) { showTypeMenu(pos); });
    connect(btnAddFocusType, &QPushButton::clicked, this, [this] { btnAddFocusTypeClicked(); });
    connect(btnRemoveFocusType, &QPushButton::clicked, this, [this] { btnRemoveFocusTypeClicked(); });
    connect(btnDuplicateFocusType, &QPushButton::clicked, this,
            [this] { makeDuplicateFocus(selectedRow()); });
}

void focusPreferencesVc::buildDetail()
{
    detailView = new QWidget(this);
    detailView->setObjectName(QStringLiteral("detailView"));
    lblTitleFocusType = style::body(detailView, "lblTitleFocusType");
    lblSelectedFocusType = style::title(detailView, "lblSelectedFocusType");
    for (QLabel* label : {lblTitleFocusType, lblSelectedFocusType}) {
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        label->setWordWrap(false);
    }
    toggleButton = new QCheckBox(detailView);
    toggleButton->setObjectName(QStringLiteral("toggleButton"));

    auto group = [this](const char* objectName, QRadioButton*& all, QRadioButton*& selected,
                        QListWidget*& list, const char* listName, QPushButton*& add, const char* addName,
                        QPushButton*& remove, const char* removeName) {
        auto* box = new QGroupBox(detailView);
        box->setObjectName(QLatin1String(objectName));
        all = new QRadioButton(box);
        selected = new QRadioButton(box);
        list = makeList(box, listName);
        add = style::quietButton(box, addName);
        remove = style::quietButton(box, removeName);
        auto* pair = new QButtonGroup(box);
        pair->addButton(all);
        pair->addButton(selected);
        auto* buttons = new QHBoxLayout;
        buttons->addWidget(add);
        buttons->addWidget(remove);
        buttons->addStretch();
        auto* layout = new QVBoxLayout(box);
        layout->addWidget(all);
        layout->addWidget(selected);
        layout->addWidget(list, 1);
        layout->addLayout(buttons);
        return box;
    };
    QGroupBox* apps = group("boxApps", radioBtnAllowAllApps, radioBtnAllowSelectedApps, tblViewAllowedApps,
                            "tblViewAllowedApps", btnAddApp, "btnAddApp", btnRemoveApp, "btnRemoveApp");
    QGroupBox* urls = group("boxUrls", radioBtnAllowAllUrls, radioBtnAllowSelectedUrls, tblViewAllowedUrls,
                            "tblViewAllowedUrls", btnAddUrl, "btnAddUrl", btnRemoveUrl, "btnRemoveUrl");
    radioBtnAllowAllApps->setObjectName(QStringLiteral("radioBtnAllowAllApps"));
    radioBtnAllowSelectedApps->setObjectName(QStringLiteral("radioBtnAllowSelectedApps"));
    radioBtnAllowAllUrls->setObjectName(QStringLiteral("radioBtnAllowAllUrls"));
    radioBtnAllowSelectedUrls->setObjectName(QStringLiteral("radioBtnAllowSelectedUrls"));

    auto* header = new QHBoxLayout;
    header->addWidget(lblTitleFocusType);
    header->addWidget(lblSelectedFocusType, 1);
    header->addWidget(toggleButton);
    auto* layout = new QVBoxLayout(detailView);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(header);
    layout->addWidget(apps, 1);
    layout->addWidget(urls, 1);

    boxEmptyFocusType = new QWidget(this);
    boxEmptyFocusType->setObjectName(QStringLiteral("boxEmptyFocusType"));
    lblNoFocusAdded = style::body(boxEmptyFocusType, "lblNoFocusAdded");
    auto* empty = new QVBoxLayout(boxEmptyFocusType);
    empty->addWidget(lblNoFocusAdded, 0, Qt::AlignCenter);

    connect(toggleButton, &QCheckBox::clicked, this, [this](bool on) { btnToggleClicked(on); });
    connect(radioBtnAllowAllApps, &QRadioButton::clicked, this, [this] { radioAppsClicked(true); });
    connect(radioBtnAllowSelectedApps, &QRadioButton::clicked, this, [this] { radioAppsClicked(false); });
    connect(radioBtnAllowAllUrls, &QRadioButton::clicked, this, [this] { radioUrlsClicked(true); });
    connect(radioBtnAllowSelectedUrls, &QRadioButton::clicked, this, [this] { radioUrlsClicked(false); });
    connect(tblViewAllowedApps, &QListWidget::itemSelectionChanged, this, [this] {
        btnRemoveApp->setEnabled(tblViewAllowedApps->isEnabled() &&
                                 !tblViewAllowedApps->selectedItems().isEmpty());
    });
    connect(tblViewAllowedUrls, &QListWidget::itemSelectionChanged, this, [this] {
        btnRemoveUrl->setEnabled(tblViewAllowedUrls->isEnabled() &&
                                 !tblViewAllowedUrls->selectedItems().isEmpty());
    });
    connect(tblViewAllowedUrls, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        tableRowAllowedUrlsDoubleClicked(tblViewAllowedUrls->row(item));
    });
    connect(btnAddApp, &QPushButton::clicked, this, [this] { btnAddAppClicked(); });
    connect(btnRemoveApp, &QPushButton::clicked, this, [this] { btnRemoveAppClicked(); });
    connect(btnAddUrl, &QPushButton::clicked, this, [this] { btnAddUrlClicked(); });
    connect(btnRemoveUrl, &QPushButton::clicked, this, [this] { btnRemoveUrlClicked(); });
}

QString focusPreferencesVc::text(const char* key, const QString& fallback) const
{
    return c.texts.text("focusPreferencesInfo", key, fallback);
}

void focusPreferencesVc::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    viewWillAppear();
}

void focusPreferencesVc::viewWillAppear()
{
    style::setText(radioBtnAllowAllApps, text("titleAllowedAllApps", QStringLiteral("Allow all apps")));
    style::setText(radioBtnAllowSelectedApps,
                   text("titleAllowedSelectedApps", QStringLiteral("Allow selected apps")));
    style::setText(radioBtnAllowAllUrls, text("titleAllowedAllUrls", QStringLiteral("Allow all urls")));
    style::setText(radioBtnAllowSelectedUrls,
                   text("titleAllowedSelectedUrls",
                        QStringLiteral("Allow selected urls (works with Safari and Chrome only)")));
    style::setText(lblTitleFocusType, text("titleFocusType", QStringLiteral("Focus Type:")));
    style::setText(lblNoFocusAdded,
                   text("noFocusAddedText", QStringLiteral("Please add a Focus Type in left panel.")));
    const QString add = text("toolTipAdd", QStringLiteral("Add"));
    const QString remove = text("toolTipRemove", QStringLiteral("Remove"));
    for (QPushButton* b : {btnAddFocusType, btnAddApp, btnAddUrl}) {
        style::setText(b, add);
        b->setToolTip(add);
    }
    for (QPushButton* b : {btnRemoveFocusType, btnRemoveApp, btnRemoveUrl}) {
        style::setText(b, remove);
        b->setToolTip(remove);
    }
    const QString duplicate = text("toolTipDuplicate", QStringLiteral("Duplicate"));
    style::setText(btnDuplicateFocusType, duplicate);
    btnDuplicateFocusType->setToolTip(duplicate);
    style::setText(toggleButton, QStringLiteral("On"));
    tblViewFocusType->setAccessibleName(lblTitleFocusType->text());
    tblViewAllowedApps->setAccessibleName(radioBtnAllowSelectedApps->text());
    tblViewAllowedUrls->setAccessibleName(radioBtnAllowSelectedUrls->text());
    reloadData();
}

int focusPreferencesVc::selectedRow() const
{
    const QList<QListWidgetItem*> selected = tblViewFocusType->selectedItems();
    return selected.isEmpty() ? -1 : tblViewFocusType->row(selected.constFirst());
}

void focusPreferencesVc::selectRow(int row)
{
    selectAndScroll(tblViewFocusType, row);
}

void focusPreferencesVc::checkState()
{
    const bool empty = c.focusTypes.count() == 0;
    detailView->setVisible(!empty);
    boxEmptyFocusType->setVisible(empty);
    btnRemoveFocusType->setEnabled(!empty);
    btnDuplicateFocusType->setEnabled(!empty);
}

void focusPreferencesVc::reloadData()
{
    const int keep = selectedRow();
    {
        const QSignalBlocker blocker(tblViewFocusType);
        tblViewFocusType->clear();
        for (int row = 0; row < c.focusTypes.count(); ++row)
            addRow(tblViewFocusType, swatch(c.focusTypes.color(row)), c.focusTypes.name(row));
    }
    checkState();
    selectRow(keep >= 0 && keep < c.focusTypes.count() ? keep : 0);
    tableViewSelectionDidChange();
}

void focusPreferencesVc::tableViewSelectionDidChange()
{
    const int row = selectedRow();
    btnRemoveApp->setEnabled(false);
    btnRemoveUrl->setEnabled(false);
    reloadAppsTable();
    reloadUrlsTable();
    followAllowAll();
    style::setText(lblSelectedFocusType, c.focusTypes.name(row));
    syncToggle();
}

void focusPreferencesVc::syncToggle()
{
    const QSignalBlocker blocker(toggleButton);
    toggleButton->setChecked(c.focusTypes.isOn(selectedRow()));
    toggleButton->setEnabled(selectedRow() >= 0 && showStartingFocusMode && showAbortingFocusModeVc);
}

void focusPreferencesVc::focusModeStarted()
{
    syncToggle();
}

void focusPreferencesVc::focusModeFinished()
{
    syncToggle();
}

void focusPreferencesVc::followAllowAll()
{
    const int row = selectedRow();
    auto follow = [row](bool allowAll, QRadioButton* all, QRadioButton* selected, QListWidget* list,
                        QPushButton* add, QPushButton* remove) {
        all->setEnabled(row >= 0);
        selected->setEnabled(row >= 0);
        (allowAll ? all : selected)->setChecked(true);
        const bool choosing = row >= 0 && !allowAll;
        list->setEnabled(choosing);
        if (!choosing)
            list->clearSelection();
        add->setEnabled(choosing);
        remove->setEnabled(choosing && !list->selectedItems().isEmpty());
    };
    follow(c.focusTypes.isAllowedAllApps(row), radioBtnAllowAllApps, radioBtnAllowSelectedApps,
           tblViewAllowedApps, btnAddApp, btnRemoveApp);
    follow(c.focusTypes.isAllowedAllUrls(row), radioBtnAllowAllUrls, radioBtnAllowSelectedUrls,
           tblViewAllowedUrls, btnAddUrl, btnRemoveUrl);
}

// An entry is shown by the name its desktop entry gives, else by its file name.
void focusPreferencesVc::reloadAppsTable()
{
    const QSignalBlocker blocker(tblViewAllowedApps);
    tblViewAllowedApps->clear();
    const QIcon fallback = QIcon::fromTheme(QStringLiteral("application-x-executable"),
                                            style()->standardIcon(QStyle::SP_FileIcon));
    for (const QString& path : c.focusTypes.appsArray(selectedRow())) {
        const Application app = c.workspace ? c.workspace->applicationFor(path) : Application();
        const QString label =
            app.isValid() && !app.displayName.isEmpty() ? app.displayName : QFileInfo(path).fileName();
        const QIcon icon = app.iconName.isEmpty() ? fallback : QIcon::fromTheme(app.iconName, fallback);
        addRow(tblViewAllowedApps, icon, label)->setToolTip(path);
    }
}

void focusPreferencesVc::reloadUrlsTable()
{
    const QSignalBlocker blocker(tblViewAllowedUrls);
    tblViewAllowedUrls->clear();
    const QIcon icon = QIcon::fromTheme(QStringLiteral("applications-internet"),
                                        style()->standardIcon(QStyle::SP_DriveNetIcon));
    for (const QString& url : c.focusTypes.urlsArray(selectedRow()))
        addRow(tblViewAllowedUrls, icon, url);
}

void focusPreferencesVc::btnAddFocusTypeClicked()
{
    addFocusTypeVcObj->viewWillAppear(true, -1);
    addFocusTypeVcObj->open();
}

void focusPreferencesVc::tableRowFocusTypeDoubleClicked(int row)
{
    // The two built-in types keep their names and colours.
    if (!c.focusTypes.isValidRow(row) || c.focusTypes.isBuiltIn(row))
        return;
    addFocusTypeVcObj->viewWillAppear(false, row);
    addFocusTypeVcObj->open();
}

void focusPreferencesVc::focusTypeSaved(int row, bool wasAdding)
{
    reloadData();
    selectRow(row);
    // After an edit the list scrolls to its end, as it always has.
    if (!wasAdding && tblViewFocusType->count() > 0)
        tblViewFocusType->scrollToItem(tblViewFocusType->item(tblViewFocusType->count() - 1));
    checkState();
    if (focusTypesRenumbered)
        focusTypesRenumbered();
}

void focusPreferencesVc::makeDuplicateFocus(int row)
{
    const int copy = c.focusTypes.makeDuplicateFocus(row);
    if (copy < 0)
        return;
    reloadData();
    selectRow(copy);
    checkState();
}

void focusPreferencesVc::showTypeMenu(const QPoint& pos)
{
    const QListWidgetItem* item = tblViewFocusType->itemAt(pos);
    const int clickedRow = item ? tblViewFocusType->row(item) : -1;
    if (clickedRow < 0)
        return;
    QMenu menu(this);
    const QAction* duplicate = menu.addAction(text("duplicateText", QStringLiteral("Duplicate")));
    if (menu.exec(tblViewFocusType->viewport()->mapToGlobal(pos)) == duplicate)
        makeDuplicateFocus(clickedRow);
}

void focusPreferencesVc::btnRemoveFocusTypeClicked()
{
    const int row = selectedRow();
    if (row < 0)
        return;
    switch (c.focusTypes.removalCheck(row)) {
    case FocusTypeList::Removal::BuiltIn:
        // The meetings type answers in the default type's words.
        inform(
            text("focusCanNotDeleteTitle", QStringLiteral("Can not delete.")),
            text("focusCanNotDeleteSubTitle", QStringLiteral("The Default focus type cannot be deleted.")));
        return;
    case FocusTypeList::Removal::RunningType:
        inform(text("focusModeOnText",
                    QStringLiteral("Focus mode is on. Please abort the focus mode to delete it.")),
               QString());
        return;
    case FocusTypeList::Removal::Allowed:
        break;
    }
    if (!ask(text("deleteFocusTypeMessageText",
                  QStringLiteral("Are you sure you want to delete the selected Focus type?")),
             text("yesText", QStringLiteral("Yes")), text("noText", QStringLiteral("No"))))
        return;
    if (!c.focusTypes.removeFocusType(row))
        return;
    reloadData();
    checkState();
    if (focusTypesRenumbered)
        focusTypesRenumbered();
}

void focusPreferencesVc::btnToggleClicked(bool isOn)
{
    const int row = selectedRow();
    const bool sheetUp = isDiscourageSheetShown && isDiscourageSheetShown();
    const auto decision = FocusTypeList::toggleDecision(isOn, sheetUp, c.focusTypes.isFocusModeOn());
    using Toggle = FocusTypeList::Toggle;
    // The switch only moves when a block really starts or ends.
    const QSignalBlocker blocker(toggleButton);
    toggleButton->setChecked(decision == Toggle::ShowAbortDialog || decision == Toggle::KeepOn);
    switch (decision) {
    case Toggle::ShowAbortDialog:
        if (showAbortingFocusModeVc)
            showAbortingFocusModeVc();
        break;
    case Toggle::AlreadyRunning:
        inform(c.texts.text("focusInfo", "focusAlreadyRunningText",
                            QStringLiteral("A focus mode is already running. Please abort the running focus "
                                           "mode to start a new one.")),
               QString());
        break;
    case Toggle::ShowStartDialog:
        if (showStartingFocusMode)
            showStartingFocusMode(row, c.focusTypes.name(row));
        break;
    case Toggle::KeepOn:
    case Toggle::KeepOff:
        break;
    }
}

void focusPreferencesVc::radioAppsClicked(bool allowAll)
{
    c.focusTypes.setAllowedAllApps(selectedRow(), allowAll);
    followAllowAll();
}

void focusPreferencesVc::radioUrlsClicked(bool allowAll)
{
    c.focusTypes.setAllowedAllUrls(selectedRow(), allowAll);
    followAllowAll();
}

void focusPreferencesVc::btnAddAppClicked()
{
    if (selectedRow() < 0)
        return;
    addApplicationVcObj->viewWillAppear();
    addApplicationVcObj->open();
}

void focusPreferencesVc::appsChosen(const QStringList& desktopFiles)
{
    const int row = selectedRow();
    if (row < 0)
        return;
    const bool skipped = c.focusTypes.addApps(row, desktopFiles);
    reloadAppsTable();
    selectAndScroll(tblViewAllowedApps, tblViewAllowedApps->count() - 1);
    if (skipped)
        inform(text("appAlreadyExistsText",
                    QStringLiteral("Some of the apps selected are already present in the list.")),
               QString());
}

void focusPreferencesVc::btnRemoveAppClicked()
{
    const int index = tblViewAllowedApps->currentRow();
    if (index < 0 || tblViewAllowedApps->selectedItems().isEmpty())
        return;
    c.focusTypes.removeApp(selectedRow(), index);
    reloadAppsTable();
    btnRemoveApp->setEnabled(false);
}

void focusPreferencesVc::btnAddUrlClicked()
{
    if (selectedRow() < 0)
        return;
    addWebUrlVcObj->viewLoddedFromFocusType = true;
    addWebUrlVcObj->isAdding = true;
    addWebUrlVcObj->focusTypeRow = selectedRow();
    addWebUrlVcObj->currentRow = qMax(0, tblViewAllowedUrls->currentRow());
    addWebUrlVcObj->viewWillAppear();
    addWebUrlVcObj->open();
}

void focusPreferencesVc::tableRowAllowedUrlsDoubleClicked(int row)
{
    if (selectedRow() < 0 || row < 0 || !tblViewAllowedUrls->isEnabled())
        return;
    addWebUrlVcObj->viewLoddedFromFocusType = true;
    addWebUrlVcObj->isAdding = false;
    addWebUrlVcObj->focusTypeRow = selectedRow();
    addWebUrlVcObj->currentRow = row;
    addWebUrlVcObj->viewWillAppear();
    addWebUrlVcObj->open();
}

void focusPreferencesVc::btnRemoveUrlClicked()
{
    const int index = tblViewAllowedUrls->currentRow();
    if (index < 0 || tblViewAllowedUrls->selectedItems().isEmpty())
        return;
    c.focusTypes.removeUrl(selectedRow(), index);
    reloadUrlsTable();
    btnRemoveUrl->setEnabled(false);
}

} // namespace velmora
