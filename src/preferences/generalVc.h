#pragma once

#include "PreferencesContext.h"

#include <optional>
#include <QWidget>

class QCheckBox;
class QLabel;
class QPushButton;

namespace velmora {

// The four things set outside the settings document: the sync folder, pomodoro
// after the morning routine, reduced motion and the next-habit quiz.
class generalVc : public QWidget
{
    Q_OBJECT
public:
    explicit generalVc(PreferencesContext ctx, QWidget* parent = nullptr);

    void viewDidLoad();
    void viewWillAppear();
    void btnSelectFolderClicked();
    void checkBoxPomodoroModeClicked();
    void checkBoxReduceMotionClicked();
    void checkBoxPromptToAskNextHabitClicked();

    // The folder chooser; tests replace it.
    std::function<std::optional<QString>()> SelectUrlofFolder;

    QLabel* lblTitleSync = nullptr;
    QLabel* lblTitleCurrentFolder = nullptr;
    QLabel* lblCurrentFolderUrl = nullptr;
    QPushButton* btnSelectFolder = nullptr;
    QLabel* lblDescription = nullptr;
    QLabel* lblTitlePomodoroMode = nullptr;
    QCheckBox* checkBoxPomodoroMode = nullptr;
    QLabel* lblTitleReduceMotion = nullptr;
    QCheckBox* checkBoxReduceMotion = nullptr;
    QLabel* lblTitleAskNextHabit = nullptr;
    QCheckBox* checkBoxPromptToAskNextHabit = nullptr;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QString text(const char* key, const QString& fallback) const;

    PreferencesContext c;
};

} // namespace velmora
