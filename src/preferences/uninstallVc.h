#pragma once

#include "PreferencesContext.h"

#include <QWidget>

class QPushButton;

namespace velmora {

// Leaving for good: the login service goes and the program quits. No file is
// deleted; the user removes the package himself.
class uninstallVc : public QWidget
{
    Q_OBJECT
public:
    explicit uninstallVc(PreferencesContext ctx, QWidget* parent = nullptr);

    void btnUninstallClicked();

    // The end of the program, supplied by the application.
    std::function<void()> uninstall;
    // Alerts; tests replace them.
    AskAlert ask;
    InformAlert inform;

    QPushButton* btUninstall = nullptr;

protected:
    void showEvent(QShowEvent* event) override;

private:
    PreferencesContext c;
};

} // namespace velmora
