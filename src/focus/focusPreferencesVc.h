#pragma once

#include "Alerts.h"
#include "FocusPreferencesContext.h"

#include <functional>
#include <QWidget>

class QButtonGroup;
class QCheckBox;
class QLabel;
class QListWidget;
class QPushButton;
class QRadioButton;
class QWidget;

namespace velmora {

class addApplicationVc;
class addFocusTypeVc;
class addWebUrlVc;

// The focus tab of the preferences: the list of focus types on the left, and
// for the selected type its switch, the applications and the addresses it
// allows. Every change is written at once; a change to the running type's rules
// reaches the running block at once.
class focusPreferencesVc : public QWidget
{
    Q_OBJECT
public:
    explicit focusPreferencesVc(FocusPreferencesContext ctx, QWidget* parent = nullptr);

    // Texts from the catalogue, then reloadData(). Called whenever the tab shows.
    void viewWillAppear();
    // With no type at all only the empty notice shows.
    void checkState();
    void reloadData();
    // The switch follows a block of the selected type that started or ended.
    void focusModeStarted();
    void focusModeFinished();

    int selectedRow() const;
    void selectRow(int row);
    void btnAddFocusTypeClicked();
    void tableRowFocusTypeDoubleClicked(int row);
    void makeDuplicateFocus(int row);
    void btnRemoveFocusTypeClicked();
    void btnToggleClicked(bool isOn);
    void radioAppsClicked(bool allowAll);
    void radioUrlsClicked(bool allowAll);
    void btnAddAppClicked();
    void appsChosen(const QStringList& desktopFiles);
    void btnRemoveAppClicked();
    void btnAddUrlClicked();
    void tableRowAllowedUrlsDoubleClicked(int row);
    void btnRemoveUrlClicked();

    // What the switch leads to, given by whoever runs focus blocks. While they
    // are unset the switch is disabled.
    std::function<void(int focusModeIndex, const QString& focusType)> showStartingFocusMode;
    std::function<void()> showAbortingFocusModeVc;
    std::function<bool()> isDiscourageSheetShown;
    // After a type was added, renamed or removed, rows have moved: the pomodoro
    // list is rebuilt and an open start window closed.
    std::function<void()> focusTypesRenumbered;
    // Alerts; tests replace them.
    AskAlert ask;
    InformAlert inform;

    QListWidget* tblViewFocusType = nullptr;
    QPushButton* btnAddFocusType = nullptr;
    QPushButton* btnRemoveFocusType = nullptr;
    QPushButton* btnDuplicateFocusType = nullptr;
    QWidget* boxEmptyFocusType = nullptr;
    QLabel* lblNoFocusAdded = nullptr;
    QWidget* detailView = nullptr;
    QLabel* lblTitleFocusType = nullptr;
    QLabel* lblSelectedFocusType = nullptr;
    QCheckBox* toggleButton = nullptr;
    QRadioButton* radioBtnAllowAllApps = nullptr;
    QRadioButton* radioBtnAllowSelectedApps = nullptr;
    QListWidget* tblViewAllowedApps = nullptr;
    QPushButton* btnAddApp = nullptr;
    QPushButton* btnRemoveApp = nullptr;
    QRadioButton* radioBtnAllowAllUrls = nullptr;
    QRadioButton* radioBtnAllowSelectedUrls = nullptr;
    QListWidget* tblViewAllowedUrls = nullptr;
    QPushButton* btnAddUrl = nullptr;
    QPushButton* btnRemoveUrl = nullptr;

    addFocusTypeVc* addFocusTypeVcObj = nullptr;
    addWebUrlVc* addWebUrlVcObj = nullptr;
    addApplicationVc* addApplicationVcObj = nullptr;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QString text(const char* key, const QString& fallback) const;
    void buildTypeList(QWidget* side);
    void buildDetail();
    void tableViewSelectionDidChange();
    void reloadAppsTable();
    void reloadUrlsTable();
    void followAllowAll();
    void syncToggle();
    void focusTypeSaved(int row, bool wasAdding);
    void showTypeMenu(const QPoint& pos);

    FocusPreferencesContext c;
};

} // namespace velmora
