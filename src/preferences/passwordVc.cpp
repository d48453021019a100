#include "passwordVc.h"

#include "PasswordStore.h"
#include "TextCatalogue.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

passwordVc::passwordVc(PreferencesContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("passwordVc"));
    lblTitle = new QLabel(this);
    QFont big = lblTitle->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.3);
    lblTitle->setFont(big);
    lblInfo = new QLabel(this);
    lblInfo->setWordWrap(true);
    lblPasswordState = new QLabel(this);
    textFieldNewPassword = new QLineEdit(this);
    textFieldNewPassword->setEchoMode(QLineEdit::Password);
    textFieldNewPassword->setAccessibleName(QStringLiteral("New password"));
    textFieldConfirmPassword = new QLineEdit(this);
    textFieldConfirmPassword->setEchoMode(QLineEdit::Password);
    textFieldConfirmPassword->setAccessibleName(QStringLiteral("Confirm password"));
    btnChangePassword = new QPushButton(this);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblTitle);
    layout->addWidget(lblInfo);
    layout->addWidget(lblPasswordState);
    layout->addWidget(textFieldNewPassword);
    layout->addWidget(textFieldConfirmPassword);
    layout->addWidget(btnChangePassword, 0, Qt::AlignLeft);
    layout->addStretch();

    connect(btnChangePassword, &QPushButton::clicked, this, [this] { btnChangePasswordClicked(); });
    connect(textFieldConfirmPassword, &QLineEdit::returnPressed, this,
            [this] { btnChangePasswordClicked(); });
    alertforvalidation = [this](const QString& title, const QString& text) {
        informModally(this, title, text, c.texts.buttonOkText);
    };
    viewWillAppear();
}

QString passwordVc::text(const char* key, const QString& fallback) const
{
    return c.texts.text("passwordPreferencesInfo", key, fallback);
}

void passwordVc::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    viewWillAppear();
}

void passwordVc::viewWillAppear()
{
    lblInfo->setText(text("infoText", QStringLiteral("You will need to enter your password - When opening "
                                                     "preferences, When aborting an evening routine, When "
                                                     "aborting the morning routine.")));
    if (password::isSet(c.preferences)) {
        lblTitle->setText(text("titleChangePassword", QStringLiteral("Change Password")));
        btnChangePassword->setText(text("buttonChangePasswordText", QStringLiteral("Change Password")));
        lblPasswordState->setText(
            text("passwordSetText", QStringLiteral("You have an active password set.")));
        textFieldNewPassword->setPlaceholderText(QStringLiteral("*****"));
        textFieldConfirmPassword->setPlaceholderText(QStringLiteral("*****"));
    } else {
        lblTitle->setText(text("titleSetPassword", QStringLiteral("Set Password")));
        btnChangePassword->setText(text("buttonSetPasswordText", QStringLiteral("Set Password")));
        lblPasswordState->setText(
            text("passwordNotSetText", QStringLiteral("You do not have a password set.")));
        textFieldNewPassword->setPlaceholderText(
            text("newPasswordPlaceholderText", QStringLiteral("New Password")));
        textFieldConfirmPassword->setPlaceholderText(
            text("confirmPasswordPlaceholderText", QStringLiteral("Confirm Password")));
    }
}

void passwordVc::btnChangePasswordClicked()
{
    const QString entered = textFieldNewPassword->text();
    const QString confirmation = textFieldConfirmPassword->text();
    if (entered.isEmpty()) {
        alertforvalidation(
            text("passwordBlankAlertTitle", QStringLiteral("Password cannot be blank.")),
            text("passwordBlankAlertSubTitle", QStringLiteral("Please enter a valid password.")));
        return;
    }
    if (confirmation.isEmpty()) {
        alertforvalidation(
            text("confirmPasswordBlankAlertTitle", QStringLiteral("Confirm password cannot be blank.")),
            text("confirmPasswordBlankAlertSubTitle",
                 QStringLiteral("Please enter a valid \"Confirm password\".")));
        return;
    }
    if (entered != confirmation) {
        alertforvalidation(text("passwordNotMatchAlertTitle", QStringLiteral("Passwords do not match.")),
                           text("passwordNotMatchAlertSubTitle",
                                QStringLiteral("Confirm Password does not match with the main password. "
                                               "Please re enter.")));
        return;
    }
    const bool replacing = password::isSet(c.preferences);
    password::store(c.preferences, entered);
    alertforvalidation(
        replacing ? text("passwordChagedAlertTitle", QStringLiteral("Password successfully changed."))
                  : text("passwordSetAlertTitle", QStringLiteral("Password successfully set.")),
        QString());
    textFieldNewPassword->clear();
    textFieldConfirmPassword->clear();
    viewWillAppear();
}

} // namespace velmora
