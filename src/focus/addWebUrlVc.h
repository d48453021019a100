#pragma once

#include "FocusPreferencesContext.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace velmora {

// The sheet that adds or edits one address pattern, either of the selected
// focus type's allowed addresses or of the always-blocked list. Entries are free
// text: not trimmed, not lower-cased, not checked to be addresses.
class addWebUrlVc : public QDialog
{
    Q_OBJECT
public:
    addWebUrlVc(FocusPreferencesContext ctx, QWidget* parent = nullptr);

    // Set by the caller before viewWillAppear: which list, adding or editing,
    // the focus type (focus list only) and the entry to edit.
    bool viewLoddedFromFocusType = true;
    bool isAdding = true;
    int focusTypeRow = -1;
    int currentRow = 0;

    void viewWillAppear();
    void btnAddClicked();

    QLabel* lblTitle = nullptr;
    QLineEdit* textField = nullptr;
    QLabel* lblInvalidDomain = nullptr;
    QPushButton* btnCancel = nullptr;
    QPushButton* btnAdd = nullptr;

Q_SIGNALS:
    // The entry at `row` of the list was added or replaced.
    void urlSaved(int row);

private:
    QString text(const char* key, const QString& fallback) const;
    QStringList entries() const;
    void refuse(const QString& message);

    FocusPreferencesContext c;
};

} // namespace velmora
