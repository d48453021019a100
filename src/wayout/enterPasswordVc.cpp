#include "enterPasswordVc.h"

#include "Clock.h"
#include "DebugLog.h"
#include "PasswordStore.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RecordFormats.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QDebug>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

namespace {
constexpr qint64 kClearPasswordAfterSeconds = 24 * 60 * 60;
} // namespace

enterPasswordVc::enterPasswordVc(Deps deps, QWidget* parent)
    : QWidget(parent)
    , d(deps)
{
    setObjectName(QStringLiteral("enterPasswordVc"));
    setAttribute(Qt::WA_StyledBackground);
    setAutoFillBackground(true);
    QFrame* card = style::overlayCard(this);
    auto* layout = static_cast<QVBoxLayout*>(card->layout());

    lblTitle = style::title(card, "lblTitle");
    textFieldPassword = new QLineEdit(card);
    textFieldPassword->setObjectName(QStringLiteral("textFieldPassword"));
    textFieldPassword->setAccessibleName(QStringLiteral("textFieldPassword"));
    textFieldPassword->setEchoMode(QLineEdit::Password);
    textFieldPassword->setAlignment(Qt::AlignCenter);
    lblError = style::body(card, "lblError");
    lblError->setStyleSheet(QStringLiteral("color: #e8a0a0;"));
    btnOk = style::primaryButton(card, "btnOk");
    btnCancel = style::quietButton(card, "btnCancel");
    btnResetPassword = style::quietButton(card, "btnResetPassword");

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnOk);
    buttons->addStretch();
    layout->addWidget(lblTitle);
    layout->addWidget(textFieldPassword, 0, Qt::AlignHCenter);
    layout->addWidget(lblError);
    layout->addLayout(buttons);
    layout->addWidget(btnResetPassword, 0, Qt::AlignHCenter);

    connect(textFieldPassword, &QLineEdit::textEdited, this, [this] {
        lblError->hide();
        lblError->clear();
    });
    connect(textFieldPassword, &QLineEdit::returnPressed, this, [this] {
        // The lock window routes Return itself.
        if (!isCurrentViewInMainWindow)
            btnOkClicked();
    });
    connect(btnOk, &QPushButton::clicked, this, &enterPasswordVc::btnOkClicked);
    connect(btnCancel, &QPushButton::clicked, this, &enterPasswordVc::btnCancelClicked);
    connect(btnResetPassword, &QPushButton::clicked, this, &enterPasswordVc::btnResetPasswordClicked);

    confirm = [this](const QString& title, const QString& text) {
        QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::NoButton, this);
        QPushButton* yes =
            box.addButton(d.texts.text("common", "yesText", QStringLiteral("Yes")), QMessageBox::AcceptRole);
        box.addButton(d.texts.text("common", "noText", QStringLiteral("No")), QMessageBox::RejectRole);
        box.exec();
        return box.clickedButton() == yes;
    };
    inform = [this](const QString& title, const QString& text) {
        QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::Ok, this);
        box.exec();
    };
}

void enterPasswordVc::viewWillAppear(bool inLockWindow)
{
    const auto text = [this](const char* key, const QString& fallback) {
        return d.texts.text("enterPasswordViewInfo", key, fallback);
    };
    lblTitle->setText(text("title", QStringLiteral("Please enter the password to continue")));
    textFieldPassword->setPlaceholderText(text("passwordPlaceholderText", QStringLiteral("Password")));
    btnOk->setText(d.texts.buttonOkText);
    btnCancel->setText(d.texts.buttonCancelText);

    isCurrentViewInMainWindow = false;
    lblError->hide();
    lblError->clear();
    textFieldPassword->clear();
    btnResetPassword->show();
    btnResetPassword->setText(text("buttonResetPasswordText", QStringLiteral("Forgot password? Reset it")));
    btnResetPassword->setEnabled(!d.preferences.contains(keys::kUserdefaults24HoursClearPasswordTime));
    if (inLockWindow) {
        // A user in a routine cannot start the reset from here.
        btnResetPassword->hide();
        isCurrentViewInMainWindow = true;
    }
    textFieldPassword->setFocus();
}

void enterPasswordVc::btnOkClicked()
{
    const auto text = [this](const char* key, const QString& fallback) {
        return d.texts.text("enterPasswordViewInfo", key, fallback);
    };
    const auto showError = [this](const QString& title, const QString& subtitle) {
        if (isCurrentViewInMainWindow) {
            lblError->setText(title + u' ' + subtitle);
            lblError->show();
        } else if (inform) {
            inform(title, subtitle);
        }
    };

    const QString entered = textFieldPassword->text();
    if (entered.isEmpty()) {
        showError(text("blankPasswordErrorTitle", QStringLiteral("Password cannot be blank.")),
                  text("blankPasswordErrorSubTitle", QStringLiteral("Please enter your password.")));
        return;
    }
    switch (password::check(d.preferences, entered)) {
    case password::Check::NotSet:
        return;
    case password::Check::Undecodable:
        // Nothing lets the user through; the reset is the way out.
        d.log.addLog(QStringLiteral("Enter password view - stored password cannot be read."));
        return;
    case password::Check::Wrong:
        d.log.addLog(QStringLiteral("Enter password view - Invalid password."));
        showError(text("incorrectPasswordErrorTitle", QStringLiteral("Incorrect password.")),
                  text("incorrectPasswordErrorSubTitle", QStringLiteral("Please try again.")));
        return;
    case password::Check::Correct:
        break;
    }
    d.log.addLog(QStringLiteral("Enter password view - password is correct"));
    hide();
    if (onCorrect)
        onCorrect();
}

void enterPasswordVc::btnCancelClicked()
{
    d.log.addLog(QStringLiteral("Enter password view - cancel clicked"));
    hide();
    if (onCancel)
        onCancel();
}

void enterPasswordVc::btnResetPasswordClicked()
{
    const auto text = [this](const char* key, const QString& fallback) {
        return d.texts.text("enterPasswordViewInfo", key, fallback);
    };
    if (!confirm || !confirm(text("alertConfirmResetPasswordTitle", QStringLiteral("Reset Password")),
                             text("alertConfirmResetPasswordSubTitle",
                                  QStringLiteral("Your current password will be removed after 24 hours. You "
                                                 "can then set a new password. Proceed?"))))
        return;

    d.log.addLog(QStringLiteral("Enter password view reset clicked"));
    if (timerCheckClearPasswordTime)
        d.scheduler.cancel(*timerCheckClearPasswordTime);
    const QDateTime clearAt = d.clock.now().addSecs(kClearPasswordAfterSeconds);
    d.preferences.setValue(keys::kUserdefaults24HoursClearPasswordTime, clearAt);
    d.log.addLog(QStringLiteral("password will be clear after 24 hours - ") + formatRecordDate(clearAt));
    // Within this run; a restart finds the date and clears at launch or on the tick.
    Preferences& preferences = d.preferences;
    const DebugLog& log = d.log;
    timerCheckClearPasswordTime =
        d.scheduler.singleShot(kClearPasswordAfterSeconds * 1000, this, [&preferences, &log] {
            preferences.remove(keys::kUserdefaults24HoursClearPasswordTime);
            preferences.remove(keys::kUserdefaultsAppPassword);
            log.addLog(QStringLiteral("password is cleard after 24 hours"));
        });

    if (inform)
        inform(text("alertPasswordResetDoneTitle", QStringLiteral("Password reset in progress")),
               text("alertPasswordResetDoneSubTitle",
                    QStringLiteral("Please set a new password after 24 hours.")));
    qDebug() << "okclicked";
    btnCancelClicked();
}

} // namespace velmora
