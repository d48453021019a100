#include "addWebUrlVc.h"

#include "FocusTypeList.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "urlValidation.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

addWebUrlVc::addWebUrlVc(FocusPreferencesContext ctx, QWidget* parent)
    : QDialog(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("addWebUrlVc"));
    setWindowModality(Qt::WindowModal);
    setStyleSheet(style::dialogStyleSheet());
    lblTitle = style::title(this, "lblTitle");
    textField = new QLineEdit(this);
    textField->setObjectName(QStringLiteral("textField"));
    textField->setMinimumWidth(360);
    lblInvalidDomain = style::body(this, "lblInvalidDomain");
    lblInvalidDomain->setStyleSheet(QStringLiteral("color: #e8a0a0;"));
    btnCancel = style::quietButton(this, "btnCancel");
    btnAdd = style::primaryButton(this, "btnAdd");

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnAdd);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(lblTitle);
    layout->addWidget(textField);
    layout->addWidget(lblInvalidDomain);
    layout->addLayout(buttons);
    setTabOrder(textField, btnCancel);
    setTabOrder(btnCancel, btnAdd);

    connect(textField, &QLineEdit::textEdited, this, [this] {
        lblInvalidDomain->hide();
        btnAdd->setEnabled(!textField->text().isEmpty());
    });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(btnAdd, &QPushButton::clicked, this, [this] { btnAddClicked(); });
}

QString addWebUrlVc::text(const char* key, const QString& fallback) const
{
    return c.texts.text(viewLoddedFromFocusType ? "focusPreferencesInfo" : "blockedUrlsViewInfo", key,
                        fallback);
}

QStringList addWebUrlVc::entries() const
{
    return viewLoddedFromFocusType ? c.focusTypes.urlsArray(focusTypeRow) : c.arrBlockedUrls;
}

void addWebUrlVc::viewWillAppear()
{
    // Replaced before it is ever shown.
    lblInvalidDomain->setText(c.texts.text("focusPreferencesInfo", "invalidDomainText",
                                           QStringLiteral("Please enter a valid domain.")));
    lblInvalidDomain->hide();
    btnAdd->setDefault(true);
    btnAdd->setEnabled(false);
    textField->clear();
    textField->setPlaceholderText(text("urlPlaceHolderString", QStringLiteral("google.com")));
    style::setText(btnCancel, text("buttonCancelText", QStringLiteral("Cancel")));
    QString title;
    if (isAdding) {
        title = text("titleAddWebUrl", QStringLiteral("Add Web Url"));
        style::setText(btnAdd, text("buttonAddText", QStringLiteral("Add")));
    } else {
        title = text("titleEditWebUrl", QStringLiteral("Edit Web Url"));
        style::setText(btnAdd, text("buttonSaveText", QStringLiteral("Save")));
        textField->setText(entries().value(currentRow));
    }
    setWindowTitle(title);
    style::setText(lblTitle, title);
    textField->setAccessibleName(title);
    textField->setFocus();
}

void addWebUrlVc::refuse(const QString& message)
{
    style::setText(lblInvalidDomain, message);
    lblInvalidDomain->show();
}

void addWebUrlVc::btnAddClicked()
{
    if (!btnAdd->isEnabled())
        return;
    const QString url = textField->text();
    if (url.contains(u'*') && QString(url).remove(u'*').isEmpty()) {
        refuse(viewLoddedFromFocusType
                   ? text("invalidDomainTextSecond",
                          QStringLiteral("If you want to allow all urls please select \"Allow all urls\" "
                                         "instead."))
                   : text("invalidDomainText",
                          QStringLiteral("Adding * will block all urls. Please use another combination.")));
        return;
    }
    // "http" makes an entry stand for its host; without one it would match nothing
    // (or, read carelessly, everything).
    if (!isReadableEntry(url)) {
        refuse(text("unreadableHostText",
                    QStringLiteral("No site can be read from \"<URL>\". Enter the site's name, like "
                                   "example.org, or its whole address, like https://example.org/."))
                   .replace(QLatin1String("<URL>"), url));
        return;
    }
    const QStringList list = entries();
    for (int i = 0; i < list.size(); ++i) {
        if ((isAdding || i != currentRow) && list[i].toLower() == url.toLower()) {
            const QString custom = text("urlAlreadyExistsText", QString());
            refuse(custom.isEmpty() ? url + QStringLiteral(" already exists in the list.")
                                    : QString(custom).replace(QLatin1String("<APPNAME>"), url));
            return;
        }
    }
    int row = currentRow;
    if (viewLoddedFromFocusType) {
        if (isAdding) {
            c.focusTypes.addUrl(focusTypeRow, url);
            row = static_cast<int>(c.focusTypes.urlsArray(focusTypeRow).size()) - 1;
        } else {
            c.focusTypes.replaceUrl(focusTypeRow, currentRow, url);
        }
    } else {
        if (isAdding || currentRow < 0 || currentRow >= c.arrBlockedUrls.size()) {
            c.arrBlockedUrls.append(url);
            row = static_cast<int>(c.arrBlockedUrls.size()) - 1;
        } else {
            c.arrBlockedUrls[currentRow] = url;
        }
        c.preferences.setValue(keys::kUserdefaultsArrBlockedUrls, c.arrBlockedUrls);
    }
    accept();
    Q_EMIT urlSaved(row);
}

} // namespace velmora
