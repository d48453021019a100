#include "WebPage.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <QLibrary>
#include <QOpenGLContext>
#include <QWidget>

// Qt's own setter of the context that every graphics context shares with; the web
// engine looks for it when it starts.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext* context);

namespace velmora::webpage {

namespace {
using CreateFn = QWidget* (*)(QWidget*);
using LoadFn = void (*)(QWidget*, const QUrl&);
using CreateWithChannelFn = QWidget* (*)(QWidget*, QObject*);
using RunJavaScriptFn = void (*)(QWidget*, const QString&);
using StopFn = bool (*)(QWidget*);

struct Module
{
    CreateFn create = nullptr;
    LoadFn load = nullptr;
    CreateWithChannelFn createWithChannel = nullptr;
    RunJavaScriptFn runJavaScript = nullptr;
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
        m.createWithChannel =
            reinterpret_cast<CreateWithChannelFn>(library.resolve("velmoraCreateChannelView"));
        m.runJavaScript = reinterpret_cast<RunJavaScriptFn>(library.resolve("velmoraRunJavaScript"));
        m.stop = reinterpret_cast<StopFn>(library.resolve("velmoraStopLoading"));
        if (!m.create || !m.load || !m.createWithChannel || !m.runJavaScript || !m.stop)
            m = Module{};
        return m;
    }();
    return loaded;
}

// The engine wants a graphics context to share with, made before it loads. A
// program that started without pages has none; making it now costs the graphics
// stack only to the user who opens a page.
bool ensureShareContext()
{
    if (QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts))
        return true;
    auto* context = new QOpenGLContext(QCoreApplication::instance());
    if (!context->create()) {
        qWarning("web pages unavailable: no graphics context");
        delete context;
        return false;
    }
    qt_gl_set_global_share_context(context);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    return true;
}
} // namespace

QString modulePath()
{
    // Beside the program in a build tree; in the library folder once installed.
    const QString beside = QCoreApplication::applicationDirPath() + QStringLiteral("/velmora-webview.so");
    if (QFileInfo::exists(beside))
        return beside;
    return QStringLiteral(VELMORA_MODULE_DIR "/velmora-webview.so");
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

namespace velmora::webpage {

QWidget* createWithChannel(QWidget* parent, QObject* bridge)
{
    if (!ensureShareContext())
        return nullptr;
    return module().createWithChannel ? module().createWithChannel(parent, bridge) : nullptr;
}

void runJavaScript(QWidget* view, const QString& script)
{
    if (view && module().runJavaScript)
        module().runJavaScript(view, script);
}

} // namespace velmora::webpage
