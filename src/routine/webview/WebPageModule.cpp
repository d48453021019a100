// The web engine lives in a module of its own, loaded on the first page an item
// shows: linking it into the program would start the engine, and its graphics
// stack, with every launch, whether the day has a page or not.

#include <QUrl>
#include <QWebEngineView>

extern "C" Q_DECL_EXPORT QWidget* velmoraCreateWebView(QWidget* parent)
{
    auto* view = new QWebEngineView(parent);
    view->setContextMenuPolicy(Qt::NoContextMenu);
    return view;
}

extern "C" Q_DECL_EXPORT void velmoraLoadPage(QWidget* view, const QUrl& url)
{
    if (auto* page = qobject_cast<QWebEngineView*>(view))
        page->load(url);
}
