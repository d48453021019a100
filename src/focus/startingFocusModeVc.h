#pragma once

#include <functional>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace velmora {

class TextCatalogue;

// How long and what for: the start of a block from the panel or the
// preferences. Hours are limited to 12 and minutes to 59; "00" and "00" cannot
// start.
class startingFocusModeVc : public QWidget
{
    Q_OBJECT
public:
    explicit startingFocusModeVc(const TextCatalogue& texts, QWidget* parent = nullptr);

    void ResetData(int focusModeIndex, const QString& focusType);
    // Keeps a field to two digits within its limit.
    void controlTextDidChange(QLineEdit* field);
    void btnStartFocusClicked();

    int totalMinutes() const;

    // Start the block of the type at the index, for the minutes, with the intention.
    std::function<void(int index, int minutes, const QString& intention)> onStart;

    QString focusType;
    int focusIndex = -1;

    QLabel* lblTitle = nullptr;
    QLabel* lblQuestion = nullptr;
    QPlainTextEdit* textViewQuestion = nullptr;
    QLabel* lblHowMuchTime = nullptr;
    QLineEdit* textFieldHour = nullptr;
    QLabel* lblHour = nullptr;
    QLineEdit* textFieldMinute = nullptr;
    QLabel* lblMinute = nullptr;
    QPushButton* btnStartFocus = nullptr;

private:
    QString text(const char* key, const QString& fallback) const;

    const TextCatalogue& m_texts;
};

// Keeps the text of an hour or minute field to two digits, at most `limit`.
QString clampTimeField(const QString& text, int limit);

} // namespace velmora
