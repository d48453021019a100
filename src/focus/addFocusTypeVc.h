#pragma once

#include "FocusPreferencesContext.h"

#include <functional>
#include <optional>
#include <QColor>
#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace velmora {

// The sheet that adds a focus type, or renames and recolours the selected one.
// The name must not clash, ignoring case, with another type's.
class addFocusTypeVc : public QDialog
{
    Q_OBJECT
public:
    addFocusTypeVc(FocusPreferencesContext ctx, QWidget* parent = nullptr);

    // Fills the sheet for adding (empty name) or for editing `row`.
    void viewWillAppear(bool isAdding, int row);
    void btnAddClicked();
    void colorWellClicked();

    bool isAdding = true;
    int selectedRow = -1;
    // The colour chooser; tests replace it. Empty: cancelled.
    std::function<std::optional<QColor>(const QColor& current)> chooseColor;

    QLabel* lblTitle = nullptr;
    QLabel* lblTitleName = nullptr;
    QLineEdit* textFieldFocusType = nullptr;
    QLabel* lblTitleColor = nullptr;
    QPushButton* colorWell = nullptr;
    QLabel* lblError = nullptr;
    QPushButton* btnCancel = nullptr;
    QPushButton* btnAdd = nullptr;

Q_SIGNALS:
    // The list changed; `row` is the added or edited type.
    void focusTypeSaved(int row, bool wasAdding);

private:
    QString text(const char* key, const QString& fallback) const;
    void setColor(const QColor& color);
    void controlTextDidChange();

    FocusPreferencesContext c;
    QColor m_color;
};

} // namespace velmora
