// The web engine lives in a module of its own, loaded on the first page an item
// shows: linking it into the program would start the engine, and its graphics
// stack, with every launch, whether the day has a page or not.

#include <QUrl>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineView>

extern "C" Q_DECL_EXPORT QWidget* velmoraCreateWebView(QWidget* parent)
{
    auto* view = new QWebEngineView(parent);
    view->setContextMenuPolicy(Qt::NoContextMenu);
    QObject::connect(view, &QWebEngineView::loadFinished, view,
                     [view] { view->setProperty("velmoraLoading", false); });
    return view;
}

extern "C" Q_DECL_EXPORT void velmoraLoadPage(QWidget* view, const QUrl& url)
{
    if (auto* page = qobject_cast<QWebEngineView*>(view)) {
        page->setProperty("velmoraLoading", true);
        page->load(url);
    }
}

extern "C" Q_DECL_EXPORT bool velmoraStopLoading(QWidget* view)
{
    auto* page = qobject_cast<QWebEngineView*>(view);
    if (!page || !page->property("velmoraLoading").toBool())
        return false;
    page->setProperty("velmoraLoading", false);
    page->stop();
    return true;
}

// The settings page talks to the program through one object under the name
// "bridge" (qrc:///qtwebchannel/qwebchannel.js on the page's side).
extern "C" Q_DECL_EXPORT QWidget* velmoraCreateChannelView(QWidget* parent, QObject* bridge)
{
    auto* view = new QWebEngineView(parent);
    view->setContextMenuPolicy(Qt::NoContextMenu);
    auto* channel = new QWebChannel(view->page());
    channel->registerObject(QStringLiteral("bridge"), bridge);
    view->page()->setWebChannel(channel);
    return view;
}

extern "C" Q_DECL_EXPORT void velmoraRunJavaScript(QWidget* view, const QString& script)
{
    if (auto* page = qobject_cast<QWebEngineView*>(view))
        page->page()->runJavaScript(script);
}
