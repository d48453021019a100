#pragma once

#include <functional>
#include <QDialog>

class QComboBox;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace velmora {

class TextCatalogue;
struct RunState;

// Twenty-five minutes of one focus type, offered after the morning routine, from
// the panel, and again five minutes after each block's questions.
class pomodoroVc : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kMinutes = 25;
    pomodoroVc(const TextCatalogue& texts, const RunState& state, QWidget* parent = nullptr);

    void viewWillAppear();
    void reFillFocusTypeList();
    void btnLetsDoItClicked();

    // "Let's do it" on the type at the index; the default type goes through the
    // discouraging sheet first, which is the owner's business.
    std::function<void(int index)> onLetsDoIt;
    std::function<void()> onEditFocusModes;

    QLabel* lblTitle = nullptr;
    QLabel* lblQuestionFirst = nullptr;
    QPlainTextEdit* textViewAchieve = nullptr;
    QLabel* lblQuestionSecond = nullptr;
    QComboBox* popUpBtnFocusType = nullptr;
    QPushButton* btnEditFocusMode = nullptr;
    QPushButton* btnLetsDoIt = nullptr;

private:
    QString text(const char* key, const QString& fallback) const;

    const TextCatalogue& m_texts;
    const RunState& m_state;
};

} // namespace velmora
