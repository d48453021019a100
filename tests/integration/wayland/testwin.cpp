// An ordinary application window for the Wayland tests: its app id, a background
// colour a screenshot tells apart, and whatever is typed into it written to a file.
//
//   velmora-testwin APP_ID COLOUR TYPED-FILE
#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (argc != 4)
        return 2;
    QApplication::setDesktopFileName(QString::fromLocal8Bit(argv[1]));
    QPlainTextEdit edit;
    edit.setWindowTitle(QString::fromLocal8Bit(argv[1]));
    edit.setStyleSheet(QStringLiteral("QPlainTextEdit { background: #%1; border: none; }")
                           .arg(QString::fromLocal8Bit(argv[2])));
    const QString typed = QString::fromLocal8Bit(argv[3]);
    QObject::connect(&edit, &QPlainTextEdit::textChanged, [&edit, typed] {
        QFile file(typed);
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            file.write(edit.toPlainText().toUtf8());
    });
    edit.resize(600, 400);
    edit.show();
    return app.exec();
}
