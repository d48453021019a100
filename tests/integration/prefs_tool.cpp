// velmora-prefs: writes keys into a preferences file the way the program itself
// stores them, so that the integration scripts need not spell out QSettings' INI
// encoding (JSON strings with quotes and commas, dates as @Variant blobs).
//
//   velmora-prefs CONF set-string KEY VALUE
//   velmora-prefs CONF set-bool KEY true|false
//   velmora-prefs CONF set-date KEY "yyyy-MM-dd HH:mm:ss"      (local time)
//   velmora-prefs CONF get-string KEY                          (to standard output)
//   velmora-prefs CONF set-list KEY JSON-ARRAY                 (a list of maps, as the type list)

#include "SettingsPreferences.h"

#include <cstdio>
#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSettings>

using namespace Qt::Literals::StringLiterals;

using velmora::SettingsPreferences;

static int usage()
{
    std::fputs("usage: velmora-prefs CONF set-string KEY VALUE\n"
               "       velmora-prefs CONF set-bool KEY true|false\n"
               "       velmora-prefs CONF set-date KEY \"yyyy-MM-dd HH:mm:ss\"\n"
               "       velmora-prefs CONF set-list KEY JSON-ARRAY\n",
               stderr);
    return 2;
}

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() == 4 && args[2] == QLatin1String("get-string")) {
        const auto value = SettingsPreferences(QFileInfo(args[1]).absoluteFilePath()).string(args[3]);
        std::fputs(value.value_or(QString()).toUtf8().constData(), stdout);
        return value ? 0 : 1;
    }
    if (args.size() != 5)
        return usage();
    const QString& path = args[1];
    const QString& command = args[2];
    const QString& key = args[3];
    const QString& text = args[4];

    QVariant value;
    if (command == QLatin1String("set-string")) {
        value = text;
    } else if (command == QLatin1String("set-bool")) {
        if (text != QLatin1String("true") && text != QLatin1String("false"))
            return usage();
        value = text == QLatin1String("true");
    } else if (command == QLatin1String("set-date")) {
        const QDateTime date = QDateTime::fromString(text, u"yyyy-MM-dd HH:mm:ss"_s);
        if (!date.isValid()) {
            std::fprintf(stderr, "velmora-prefs: '%s' is not a date of the form yyyy-MM-dd HH:mm:ss\n",
                         qPrintable(text));
            return 2;
        }
        value = date;
    } else if (command == QLatin1String("set-list")) {
        const QJsonDocument list = QJsonDocument::fromJson(text.toUtf8());
        if (!list.isArray())
            return usage();
        value = list.array().toVariantList();
    } else {
        return usage();
    }

    SettingsPreferences prefs(QFileInfo(path).absoluteFilePath());
    prefs.setValue(key, value);
    prefs.sync();
    // QSettings reports a file it could not write only through its status.
    QSettings check(QFileInfo(path).absoluteFilePath(), QSettings::IniFormat);
    if (check.status() != QSettings::NoError || !check.contains(key)) {
        std::fprintf(stderr, "velmora-prefs: could not write %s to %s\n", qPrintable(key), qPrintable(path));
        return 1;
    }
    return 0;
}
