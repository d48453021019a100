#include "Alerts.h"

#include <QMessageBox>
#include <QPushButton>

namespace velmora {

bool askModally(QWidget* parent, const QString& text, const QString& yes, const QString& no)
{
    QMessageBox box(QMessageBox::Question, QStringLiteral("Velmora"), text, QMessageBox::NoButton, parent);
    box.setWindowFlags(box.windowFlags() | Qt::WindowStaysOnTopHint);
    QPushButton* first = box.addButton(yes, QMessageBox::AcceptRole);
    box.addButton(no, QMessageBox::RejectRole);
    box.exec();
    return box.clickedButton() == first;
}

void informModally(QWidget* parent, const QString& title, const QString& text, const QString& ok)
{
    QMessageBox box(QMessageBox::NoIcon, QStringLiteral("Velmora"), title, QMessageBox::NoButton, parent);
    box.setWindowFlags(box.windowFlags() | Qt::WindowStaysOnTopHint);
    box.setInformativeText(text);
    box.addButton(ok, QMessageBox::AcceptRole);
    box.exec();
}

} // namespace velmora
