#pragma once

#include "RoutineContext.h"
#include "RunState.h"

#include <optional>
#include <QFrame>

class QLabel;
class QLineEdit;
class QPushButton;

namespace velmora {

// Asks how many of something the user did, over whichever screen is up, and
// writes the item's usage row with the answer. The routine goes on beneath it.
class logQuantityVc : public QFrame
{
    Q_OBJECT
public:
    explicit logQuantityVc(RoutineContext ctx, QWidget* parent = nullptr);

    void resetData(const QString& name, const QString& durationInSeconds,
                   const std::optional<QString>& logQuantityQuestion, CURRENTSTATE currentState);
    void btnOkClicked();
    void btnCancelClicked();
    // Keeps the field a whole number of at most four characters.
    void controlTextDidChange();
    static QString normalisedCount(const QString& typed);
    bool isUp() const { return isVisible(); }

    QString name;
    QString durationInSeconds;
    QString logQuantityQuestion;
    std::optional<CURRENTSTATE> lCurrentState;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubTitle = nullptr;
    QLineEdit* textFieldCount = nullptr;
    QPushButton* btnOk = nullptr;
    QPushButton* btnCancel = nullptr;

Q_SIGNALS:
    void dismissed();

private:
    void removeView();
    RoutineContext c;
};

} // namespace velmora
