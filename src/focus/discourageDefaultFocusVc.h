#pragma once

#include "CountDown.h"

#include <functional>
#include <QDialog>

class QLabel;
class QPushButton;

namespace velmora {

class Scheduler;
class TextCatalogue;

// A sheet that argues against the type that blocks nothing. "Shutup" earns the
// block after five seconds; "Cancel" gives up on it.
class discourageDefaultFocusVc : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kSeconds = 5;
    discourageDefaultFocusVc(const TextCatalogue& texts, Scheduler& scheduler);

    // Comes up over the given window, which it keeps from input meanwhile.
    void presentOn(QWidget* window);
    void resetData();
    void btnShutupClicked();
    void btnCancelClicked();

    // The five seconds are over, or the user took the way back.
    std::function<void(QWidget* window)> onTimeServed;
    std::function<void(QWidget* window)> onCancel;

    QLabel* lblTitle = nullptr;
    QLabel* lblTimer = nullptr;
    QPushButton* btnCancel = nullptr;
    QPushButton* btnShutUp = nullptr;
    CountDown timer;

public Q_SLOTS:
    void reject() override { btnCancelClicked(); }

protected:
    void hideEvent(QHideEvent* event) override;

private:
    QString text(const char* key, const QString& fallback) const;

    const TextCatalogue& m_texts;
};

} // namespace velmora
