#pragma once

#include <QUrl>

class QObject;
class QWidget;

namespace velmora::webpage {

// Makes a web view, loading the web engine module on first use. Answers null
// when the module cannot be loaded; the item then runs without its page.
QWidget* create(QWidget* parent);
void load(QWidget* view, const QUrl& url);
// Makes a web view whose page reaches `bridge` through a web channel, under the
// name "bridge". Works in a program that started without pages: the shared
// graphics context is made here, before the engine loads. Null when the engine
// cannot be had (no module, no graphics context).
QWidget* createWithChannel(QWidget* parent, QObject* bridge);
void runJavaScript(QWidget* view, const QString& script);
// Stops a load that is still under way; answers whether there was one.
bool stopLoading(QWidget* view);
// A page that has not loaded in this time is given up.
inline constexpr int kLoadTimeoutMs = 60'000;
// The module's path: beside the program, where the build and the install put it.
QString modulePath();

} // namespace velmora::webpage
