#pragma once

#include <QUrl>

class QWidget;

namespace velmora::webpage {

// Makes a web view, loading the web engine module on first use. Answers null
// when the module cannot be loaded; the item then runs without its page.
QWidget* create(QWidget* parent);
void load(QWidget* view, const QUrl& url);
// The module's path: beside the program, where the build and the install put it.
QString modulePath();

} // namespace velmora::webpage
