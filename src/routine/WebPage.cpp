#include "WebPage.h"

#include <QCoreApplication>
#include <QDebug>
#include <QLibrary>
#include <QWidget>

namespace velmora::webpage {

namespace {
using CreateFn = QWidget* (*)(QWidget*);
using LoadFn = void (*)(QWidget*, const QUrl&);
using StopFn = bool (*)(QWidget*);

struct Module
{
    CreateFn create = nullptr;
    LoadFn load = nullptr;
    StopFn stop = nullptr;
};

const Module& module()
{
    static const Module loaded = [] {
        Module m;
        QLibrary library(modulePath());
        if (!library.load()) {
            qWarning().noquote() << "web pages unavailable:" << library.errorString();
            return m;
        }
        m.create = reinterpret_cast<CreateFn>(library.resolve("velmoraCreateWebView"));
        m.load = reinterpret_cast<LoadFn>(library.resolve("velmoraLoadPage"));
        m.stop = reinterpret_cast<StopFn>(library.resolve("velmoraStopLoading"));
        if (!m.create || !m.load || !m.stop)
            m = Module{};
        return m;
    }();
    return loaded;
}
} // namespace

QString modulePath()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/velmora-webview.so");
}

QWidget* create(QWidget* parent)
{
    // The engine needs the shared graphics context that the program makes at
    // start when its day holds pages; without it the engine cannot start.
    if (!QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts)) {
        qWarning("web pages unavailable: the program started without pages in its settings");
        return nullptr;
    }
    return module().create ? module().create(parent) : nullptr;
}

void load(QWidget* view, const QUrl& url)
{
    if (view && module().load)
        module().load(view, url);
}

bool stopLoading(QWidget* view)
{
    return view && module().stop && module().stop(view);
}

} // namespace velmora::webpage
