#pragma once

#include "PreferencesContext.h"

#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

namespace velmora {

// Sets or replaces the password. The old one is not asked for here: getting
// into the preferences was the test.
class passwordVc : public QWidget
{
    Q_OBJECT
public:
    explicit passwordVc(PreferencesContext ctx, QWidget* parent = nullptr);

    void viewWillAppear();
    void btnChangePasswordClicked();

    // One-button alerts; tests replace it.
    InformAlert alertforvalidation;

    QLabel* lblTitle = nullptr;
    QLabel* lblInfo = nullptr;
    QLabel* lblPasswordState = nullptr;
    QLineEdit* textFieldNewPassword = nullptr;
    QLineEdit* textFieldConfirmPassword = nullptr;
    QPushButton* btnChangePassword = nullptr;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QString text(const char* key, const QString& fallback) const;

    PreferencesContext c;
};

} // namespace velmora
