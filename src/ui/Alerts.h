#pragma once

#include <functional>
#include <QString>

class QWidget;

namespace velmora {

// A question with two answers; true for the first.
using AskAlert = std::function<bool(const QString& text, const QString& yes, const QString& no)>;
// A notice with one button.
using InformAlert = std::function<void(const QString& title, const QString& text)>;

// The modal boxes behind the two, kept above the lock windows.
bool askModally(QWidget* parent, const QString& text, const QString& yes, const QString& no);
void informModally(QWidget* parent, const QString& title, const QString& text, const QString& ok);

} // namespace velmora
