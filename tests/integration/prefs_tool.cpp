// velmora-prefs: keys of a preferences file as the program stores them, so that the
// integration scripts need not spell out QSettings' encoding of JSON strings and dates.
//
//   velmora-prefs CONF set-string KEY VALUE
//   velmora-prefs CONF set-bool KEY true|false
//   velmora-prefs CONF set-date KEY "yyyy-MM-dd HH:mm:ss"      (local time)
//   velmora-prefs CONF set-list KEY JSON-ARRAY
//   velmora-prefs CONF get-string KEY                          (to standard output)

#include "SettingsPreferences.h"

#include <cstdio>
#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

using namespace Qt::Literals::StringLiterals;

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4) {
        std::fputs("usage: velmora-prefs CONF set-string|set-bool|set-date|set-list KEY VALUE\n"
                   "       velmora-prefs CONF get-string KEY\n",
                   stderr);
        return 2;
    }
    const QString path = QFileInfo(args[1]).absoluteFilePath();
    const QString& command = args[2];
    const QString& key = args[3];
    velmora::SettingsPreferences prefs(path);
    if (command == u"get-string"_s) {
        const auto value = prefs.string(key);
        std::fputs(value.value_or(QString()).toUtf8().constData(), stdout);
        return value ? 0 : 1;
    }

    const QString text = args.value(4);
    QVariant value;
    if (command == u"set-string"_s)
        value = text;
    else if (command == u"set-bool"_s && (text == u"true"_s || text == u"false"_s))
        value = text == u"true"_s;
    else if (const QDateTime date = QDateTime::fromString(text, u"yyyy-MM-dd HH:mm:ss"_s);
             command == u"set-date"_s && date.isValid())
        value = date;
    else if (command == u"set-list"_s && QJsonDocument::fromJson(text.toUtf8()).isArray())
        value = QJsonDocument::fromJson(text.toUtf8()).array().toVariantList();
    if (!value.isValid() || args.size() != 5) {
        std::fprintf(stderr, "velmora-prefs: cannot %s '%s'\n", qPrintable(command), qPrintable(text));
        return 2;
    }
    prefs.setValue(key, value);
    prefs.sync();
    return 0;
}
