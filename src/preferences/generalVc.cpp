#include "generalVc.h"

#include "PreferenceKeys.h"
#include "Preferences.h"
#include "RunState.h"
#include "TextCatalogue.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

generalVc::generalVc(PreferencesContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("generalVc"));
    auto label = [this](const char* name) {
        auto* l = new QLabel(this);
        l->setObjectName(QLatin1String(name));
        l->setWordWrap(true);
        l->setTextFormat(Qt::PlainText);
        return l;
    };
    lblTitleSync = label("lblTitleSync");
    lblTitleCurrentFolder = label("lblTitleCurrentFolder");
    lblCurrentFolderUrl = label("lblCurrentFolderUrl");
    lblCurrentFolderUrl->setTextInteractionFlags(Qt::TextSelectableByMouse);
    btnSelectFolder = new QPushButton(this);
    btnSelectFolder->setObjectName(QStringLiteral("btnSelectFolder"));
    lblDescription = label("lblDescription");
    lblTitlePomodoroMode = label("lblTitlePomodoroMode");
    checkBoxPomodoroMode = new QCheckBox(this);
    lblTitleReduceMotion = label("lblTitleReduceMotion");
    checkBoxReduceMotion = new QCheckBox(this);
    lblTitleAskNextHabit = label("lblTitleAskNextHabit");
    checkBoxPromptToAskNextHabit = new QCheckBox(this);

    auto* form = new QFormLayout(this);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    auto* folder = new QHBoxLayout;
    folder->addWidget(lblTitleCurrentFolder);
    folder->addWidget(lblCurrentFolderUrl, 1);
    folder->addWidget(btnSelectFolder);
    auto* sync = new QVBoxLayout;
    sync->addLayout(folder);
    sync->addWidget(lblDescription);
    form->addRow(lblTitleSync, sync);
    form->addRow(lblTitlePomodoroMode, checkBoxPomodoroMode);
    form->addRow(lblTitleReduceMotion, checkBoxReduceMotion);
    form->addRow(lblTitleAskNextHabit, checkBoxPromptToAskNextHabit);

    connect(btnSelectFolder, &QPushButton::clicked, this, [this] { btnSelectFolderClicked(); });
    connect(checkBoxPomodoroMode, &QCheckBox::clicked, this, [this] { checkBoxPomodoroModeClicked(); });
    connect(checkBoxReduceMotion, &QCheckBox::clicked, this, [this] { checkBoxReduceMotionClicked(); });
    connect(checkBoxPromptToAskNextHabit, &QCheckBox::clicked, this,
            [this] { checkBoxPromptToAskNextHabitClicked(); });

    SelectUrlofFolder = [this]() -> std::optional<QString> {
        QFileDialog dialog(window(), QStringLiteral("Please select a folder"));
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        dialog.setLabelText(QFileDialog::Accept, QStringLiteral("Select"));
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
            return std::nullopt;
        return dialog.selectedFiles().constFirst();
    };
    viewDidLoad();
}

QString generalVc::text(const char* key, const QString& fallback) const
{
    return c.texts.text("preferencesInfo", key, fallback);
}

void generalVc::viewDidLoad()
{
    lblTitleSync->setText(text("titleSync", QStringLiteral("Sync data across devices:")));
    lblTitleCurrentFolder->setText(text("titleCurrentFolder", QStringLiteral("Current Folder:")));
    btnSelectFolder->setText(text("buttonSelectFolderText", QStringLiteral("Select Folder")));
    lblDescription->setText(
        text("syncDescription",
             QStringLiteral(
                 "You can specify a folder (e.g. a dropbox folder) to store the usage data so that if you "
                 "complete the morning routine on one computer, it automatically syncs on other devices. "
                 "It is required to select such synced folder on all devices.")));
    lblTitlePomodoroMode->setText(text("titlePomodoro", QStringLiteral("Pomodoro Mode:")));
    checkBoxPomodoroMode->setText(
        text("checkBoxPomodoroText", QStringLiteral("Enter Pomodoro mode after completing morning routine")));
    lblTitleReduceMotion->setText(text("titleReduceMotion", QStringLiteral("Reduce motion:")));
    checkBoxReduceMotion->setText(text("checkBoxReduceMotionText",
                                       QStringLiteral("Prefer reduced motion (don't show animated otters)")));
    lblTitleAskNextHabit->setText(text("titleAskNextHabit", QStringLiteral("Next habit remembrance:")));
    checkBoxPromptToAskNextHabit->setText(
        text("checkBoxPromptToAskNextHabitText",
             QStringLiteral("Occasionally prompt me to remember the next habit")));
}

void generalVc::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    viewWillAppear();
}

void generalVc::viewWillAppear()
{
    viewDidLoad();
    const auto folder = c.preferences.string(keys::kUserdefaultsSelectedFolder);
    lblCurrentFolderUrl->setText(folder && !folder->isEmpty() ? *folder
                                                              : QStringLiteral("Please select a Folder."));
    checkBoxPomodoroMode->setChecked(
        c.preferences.boolean(keys::kUserdefaultsPomodoroModeEnabled).value_or(false));
    c.state.kIsReducedMotion = c.preferences.boolean(keys::kUserdefaultsReducedMotion).value_or(false);
    checkBoxReduceMotion->setChecked(c.state.kIsReducedMotion);
    c.state.isPromptToRememberHabit =
        c.preferences.boolean(keys::kUserdefaultsPromptToRememberHabit).value_or(false);
    checkBoxPromptToAskNextHabit->setChecked(c.state.isPromptToRememberHabit);
}

void generalVc::btnSelectFolderClicked()
{
    const std::optional<QString> folder = SelectUrlofFolder();
    if (!folder)
        return;
    c.preferences.setValue(keys::kUserdefaultsSelectedFolder, *folder);
    lblCurrentFolderUrl->setText(*folder);
}

void generalVc::checkBoxPomodoroModeClicked()
{
    c.preferences.setValue(keys::kUserdefaultsPomodoroModeEnabled, checkBoxPomodoroMode->isChecked());
}

void generalVc::checkBoxReduceMotionClicked()
{
    c.state.kIsReducedMotion = checkBoxReduceMotion->isChecked();
    c.preferences.setValue(keys::kUserdefaultsReducedMotion, c.state.kIsReducedMotion);
}

void generalVc::checkBoxPromptToAskNextHabitClicked()
{
    c.state.isPromptToRememberHabit = checkBoxPromptToAskNextHabit->isChecked();
    c.preferences.setValue(keys::kUserdefaultsPromptToRememberHabit, c.state.isPromptToRememberHabit);
}

} // namespace velmora
