#pragma once

#include "FocusPreferencesContext.h"

#include <QWidget>

class QLabel;
class QListWidget;
class QPushButton;

namespace velmora {

class addWebUrlVc;

// The always-blocked addresses: blocked in the browsers whenever no focus block
// runs. Edited with the same sheet as a focus type's addresses.
class blockedUrlsVc : public QWidget
{
    Q_OBJECT
public:
    explicit blockedUrlsVc(FocusPreferencesContext ctx, QWidget* parent = nullptr);

    void viewWillAppear();
    void reloadData();
    void btnAddUrlClicked();
    void tableRowAllowedUrlsDoubleClicked(int row);
    void btnRemoveUrlClicked();
    // Whether each browser's extension is connected, as it is now.
    void reloadBrowsers();

    QLabel* lblTitle = nullptr;
    QListWidget* tblViewBlockedUrls = nullptr;
    QPushButton* btnAddUrl = nullptr;
    QPushButton* btnRemoveUrl = nullptr;
    addWebUrlVc* addWebUrlVcObj = nullptr;
    QLabel* lblBrowsers = nullptr;
    QListWidget* tblViewBrowsers = nullptr;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void openSheet(bool isAdding, int row);

    FocusPreferencesContext c;
};

} // namespace velmora
