#include "addApplicationVc.h"

#include "Style.h"
#include "TextCatalogue.h"
#include "Workspace.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

addApplicationVc::addApplicationVc(Workspace* workspace, const TextCatalogue& texts, QWidget* parent)
    : QDialog(parent)
    , m_workspace(workspace)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("addApplicationVc"));
    setWindowModality(Qt::WindowModal);
    setStyleSheet(style::dialogStyleSheet());
    resize(460, 520);
    lblTitle = style::title(this, "lblTitle");
    lblSearch = style::body(this, "lblSearch");
    lblSearch->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    textFieldSearch = new QLineEdit(this);
    textFieldSearch->setObjectName(QStringLiteral("textFieldSearch"));
    textFieldSearch->setClearButtonEnabled(true);
    lblSearch->setBuddy(textFieldSearch);
    tblViewApplications = new QListWidget(this);
    tblViewApplications->setObjectName(QStringLiteral("tblViewApplications"));
    tblViewApplications->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tblViewApplications->setIconSize(QSize(24, 24));
    btnOtherFile = style::quietButton(this, "btnOtherFile");
    btnCancel = style::quietButton(this, "btnCancel");
    btnSelect = style::primaryButton(this, "btnSelect");

    auto* search = new QHBoxLayout;
    search->addWidget(lblSearch);
    search->addWidget(textFieldSearch, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(btnOtherFile);
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnSelect);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblTitle);
    layout->addLayout(search);
    layout->addWidget(tblViewApplications, 1);
    layout->addLayout(buttons);
    setTabOrder(textFieldSearch, tblViewApplications);
    setTabOrder(tblViewApplications, btnOtherFile);
    setTabOrder(btnOtherFile, btnCancel);
    setTabOrder(btnCancel, btnSelect);

    connect(textFieldSearch, &QLineEdit::textChanged, this, [this](const QString& s) { filter(s); });
    connect(tblViewApplications, &QListWidget::itemSelectionChanged, this,
            [this] { btnSelect->setEnabled(!tblViewApplications->selectedItems().isEmpty()); });
    connect(tblViewApplications, &QListWidget::itemActivated, this, [this] { btnSelectClicked(); });
    connect(btnOtherFile, &QPushButton::clicked, this, [this] { btnOtherFileClicked(); });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(btnSelect, &QPushButton::clicked, this, [this] { btnSelectClicked(); });
    chooseDesktopFiles = [this] {
        return QFileDialog::getOpenFileNames(this, btnOtherFile->text(),
                                             QStringLiteral("/usr/share/applications"),
                                             QStringLiteral("Desktop entries (*.desktop)"));
    };
}

void addApplicationVc::viewWillAppear()
{
    const QString title = QStringLiteral("Choose applications");
    setWindowTitle(title);
    style::setText(lblTitle, title);
    style::setText(lblSearch, QStringLiteral("Search:"));
    textFieldSearch->setAccessibleName(lblSearch->text());
    style::setText(btnOtherFile, QStringLiteral("Other desktop file…"));
    style::setText(btnCancel,
                   m_texts.text("focusPreferencesInfo", "buttonCancelText", QStringLiteral("Cancel")));
    style::setText(btnSelect,
                   m_texts.text("focusPreferencesInfo", "buttonSelectAppText", QStringLiteral("Select")));
    tblViewApplications->setAccessibleName(title);
    btnSelect->setDefault(true);
    btnSelect->setEnabled(false);

    tblViewApplications->clear();
    const QList<Application> installed =
        m_workspace ? m_workspace->installedApplications() : QList<Application>();
    for (const Application& app : installed) {
        if (app.desktopFile.isEmpty())
            continue;
        const QString label = app.displayName.isEmpty() ? app.name : app.displayName;
        auto* item = new QListWidgetItem(
            QIcon::fromTheme(app.iconName, QIcon::fromTheme(QStringLiteral("application-x-executable"))),
            label, tblViewApplications);
        item->setData(Qt::UserRole, app.desktopFile);
        item->setData(Qt::AccessibleTextRole, label);
        item->setToolTip(app.desktopFile);
    }
    textFieldSearch->clear();
    textFieldSearch->setFocus();
}

void addApplicationVc::filter(const QString& search)
{
    const QString wanted = search.trimmed();
    for (int i = 0; i < tblViewApplications->count(); ++i) {
        QListWidgetItem* item = tblViewApplications->item(i);
        const bool match = item->text().contains(wanted, Qt::CaseInsensitive) ||
                           item->data(Qt::UserRole).toString().contains(wanted, Qt::CaseInsensitive);
        item->setHidden(!match);
        if (!match)
            item->setSelected(false);
    }
}

void addApplicationVc::btnSelectClicked()
{
    // Return on a row both activates it and presses the default button.
    if (!isVisible())
        return;
    QStringList files;
    for (int i = 0; i < tblViewApplications->count(); ++i) {
        const QListWidgetItem* item = tblViewApplications->item(i);
        if (item->isSelected() && !item->isHidden())
            files << item->data(Qt::UserRole).toString();
    }
    if (files.isEmpty())
        return;
    accept();
    Q_EMIT applicationsChosen(files);
}

void addApplicationVc::btnOtherFileClicked()
{
    const QStringList files = chooseDesktopFiles();
    if (files.isEmpty())
        return;
    accept();
    Q_EMIT applicationsChosen(files);
}

} // namespace velmora
