#pragma once

#include <functional>
#include <QDialog>

class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace velmora {

class TextCatalogue;

// The questions at the end of a block. The window has no close box: its button
// is the way out, or the start of the next block.
class focusCompletedVc : public QDialog
{
    Q_OBJECT
public:
    explicit focusCompletedVc(const TextCatalogue& texts, QWidget* parent = nullptr);

    void resetData(const QString& focusModeName, bool fromShutOff, const QString& intention);
    void btnTakeBreakClicked();

    // The user's answers, written as the block's row.
    std::function<void(const QString& focusName, const QString& achieved, const QString& distractions)>
        onTakeBreak;

    QString currentFocusModeName;
    bool fromShutOff = false;

    QLabel* lblTitle = nullptr;
    QLabel* lblSubTitle = nullptr;
    QLabel* lblIntentionWas = nullptr;
    QLabel* textViewIntention = nullptr;
    QLabel* lblQuestionFirst = nullptr;
    QPlainTextEdit* textViewAchieve = nullptr;
    QLabel* lblQuestionSecond = nullptr;
    QPlainTextEdit* textViewDistractions = nullptr;
    QPushButton* btnTakeBreak = nullptr;

public Q_SLOTS:
    // Escape does not close it either.
    void reject() override {}

private:
    QString text(const char* key, const QString& fallback) const;

    const TextCatalogue& m_texts;
};

} // namespace velmora
