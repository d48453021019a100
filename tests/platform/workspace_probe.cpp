// Follows the front application through the X11 workspace, for the integration
// tests: prints "front=<name>" at every change and, with --keep NAME[,NAME…],
// hides every other application as it comes to the front ("hid=<name>").
#include "X11Workspace.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption keep(QStringLiteral("keep"), QStringLiteral("Applications left alone."),
                                  QStringLiteral("names"));
    parser.addOption(keep);
    parser.process(app);
    const QStringList kept = parser.value(keep).split(u',', Qt::SkipEmptyParts);

    velmora::X11Workspace workspace;
    if (!workspace.isConnected())
        return 2;
    QTextStream out(stdout);
    const auto judge = [&] {
        const velmora::Application front = workspace.frontmostApplication();
        out << "front=" << front.name << Qt::endl;
        if (front.isValid() && parser.isSet(keep) && !kept.contains(front.name)) {
            workspace.hide(front);
            out << "hid=" << front.name << Qt::endl;
        }
    };
    QObject::connect(&workspace, &velmora::Workspace::frontApplicationChanged, judge);
    out << "ready running=" << workspace.runningApplications().join(u',') << Qt::endl;
    return app.exec();
}
