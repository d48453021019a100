#pragma once

#include <functional>
#include <QDialog>
#include <QStringList>

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace velmora {

class TextCatalogue;
class Workspace;

// The chooser of the applications a focus type allows: the installed
// applications with their names and icons, searchable, several at once, and a
// file chooser for any other desktop entry. Answers the entries' full paths.
class addApplicationVc : public QDialog
{
    Q_OBJECT
public:
    addApplicationVc(Workspace* workspace, const TextCatalogue& texts, QWidget* parent = nullptr);

    // Lists the installed applications again and clears the search.
    void viewWillAppear();
    void filter(const QString& search);
    void btnSelectClicked();
    void btnOtherFileClicked();

    // The file chooser; tests replace it. Empty: cancelled.
    std::function<QStringList()> chooseDesktopFiles;

    QLabel* lblTitle = nullptr;
    QLabel* lblSearch = nullptr;
    QLineEdit* textFieldSearch = nullptr;
    QListWidget* tblViewApplications = nullptr;
    QPushButton* btnOtherFile = nullptr;
    QPushButton* btnCancel = nullptr;
    QPushButton* btnSelect = nullptr;

Q_SIGNALS:
    void applicationsChosen(const QStringList& desktopFiles);

private:
    Workspace* m_workspace;
    const TextCatalogue& m_texts;
};

} // namespace velmora
