#pragma once

#include "CountDown.h"

#include <functional>
#include <QStringList>
#include <QWidget>

class QComboBox;
class QLabel;
class QPushButton;

namespace velmora {

class Scheduler;
class TextCatalogue;
struct RunState;

// Leaving a block early is slow: ten seconds with the window open before the
// abort can be pressed, and a reason for it.
class abortingFocusModeVc : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSeconds = 10;
    // The reasons by index; the index decides, whatever the catalogue calls them.
    static const QStringList kReasons;

    abortingFocusModeVc(const TextCatalogue& texts, const RunState& state, Scheduler& scheduler,
                        QWidget* parent = nullptr);

    void ResetData();
    void startTimer();
    void btnAbortFocusClicked();

    std::function<void(int reasonIndex, const QString& focusName)> onAbort;
    std::function<void()> onCancel;

    QString focusName;
    QLabel* lblTitle = nullptr;
    QLabel* lblQuestionFirst = nullptr;
    QComboBox* popUpBtnAbortReasons = nullptr;
    QLabel* lblSeconds = nullptr;
    QPushButton* btnCancel = nullptr;
    QPushButton* btnAbortFocus = nullptr;
    CountDown timer;

protected:
    void hideEvent(QHideEvent* event) override;

private:
    QString text(const char* key, const QString& fallback) const;

    const TextCatalogue& m_texts;
    const RunState& m_state;
};

} // namespace velmora
