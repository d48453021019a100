#include "GnomeExtensionInstall.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <gio/gio.h>

namespace velmora {

static QString formFolder(int shellMajor)
{
    return shellMajor >= 45 ? QStringLiteral(":/gnome-extension/45") : QStringLiteral(":/gnome-extension/43");
}

static QJsonObject metadataIn(const QString& folder)
{
    QFile file(folder + QStringLiteral("/metadata.json"));
    if (!file.open(QIODevice::ReadOnly) || file.size() > 64 * 1024)
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

int GnomeExtensionInstall::carriedVersion()
{
    return metadataIn(formFolder(45)).value(QStringLiteral("version")).toInt();
}

int GnomeExtensionInstall::installedVersion(const QString& folder, int shellMajor)
{
    const QJsonObject metadata = metadataIn(folder);
    if (metadata.value(QStringLiteral("uuid")).toString() != QLatin1String(kUuid))
        return 0;
    if (!metadata.value(QStringLiteral("shell-version")).toArray().contains(QString::number(shellMajor)))
        return -1;
    return metadata.value(QStringLiteral("version")).toInt();
}

int GnomeExtensionInstall::majorOf(const QString& shellVersion)
{
    return shellVersion.section(QLatin1Char('.'), 0, 0).toInt();
}

bool GnomeExtensionInstall::installIfOlder(const QString& folder, int shellMajor, QString* error)
{
    if (installedVersion(folder, shellMajor) >= carriedVersion())
        return false;
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("cannot make %1").arg(folder);
        return false;
    }
    // The script first, so that a new metadata.json never names an old script.
    for (const char* name : {"extension.js", "metadata.json"}) {
        QFile carried(formFolder(shellMajor) + QLatin1Char('/') + QLatin1String(name));
        QSaveFile target(folder + QLatin1Char('/') + QLatin1String(name));
        if (!carried.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly) ||
            target.write(carried.readAll()) < 0 || !target.commit()) {
            *error = QStringLiteral("cannot write %1: %2").arg(target.fileName(), target.errorString());
            return false;
        }
    }
    return true;
}

static QStringList stringsOf(GSettings* settings, const char* key)
{
    QStringList out;
    gchar** values = g_settings_get_strv(settings, key);
    for (gchar** value = values; value && *value; ++value)
        out << QString::fromUtf8(*value);
    g_strfreev(values);
    return out;
}

static void setStrings(GSettings* settings, const char* key, const QStringList& values)
{
    QList<QByteArray> bytes;
    for (const QString& value : values)
        bytes << value.toUtf8();
    QVector<const gchar*> pointers;
    for (const QByteArray& b : std::as_const(bytes))
        pointers << b.constData();
    pointers << nullptr;
    g_settings_set_strv(settings, key, pointers.constData());
}

bool GnomeExtensionInstall::enable(QString* error)
{
    GSettingsSchemaSource* source = g_settings_schema_source_get_default();
    GSettingsSchema* schema =
        source ? g_settings_schema_source_lookup(source, "org.gnome.shell", TRUE) : nullptr;
    if (!schema) {
        *error = QStringLiteral("the schema org.gnome.shell is not installed");
        return false;
    }
    g_settings_schema_unref(schema);
    GSettings* settings = g_settings_new("org.gnome.shell");
    const QString uuid = QLatin1String(kUuid);
    QStringList enabled = stringsOf(settings, "enabled-extensions");
    if (!enabled.contains(uuid))
        setStrings(settings, "enabled-extensions", enabled << uuid);
    QStringList disabled = stringsOf(settings, "disabled-extensions");
    if (disabled.removeAll(uuid) > 0)
        setStrings(settings, "disabled-extensions", disabled);
    g_settings_sync();
    g_object_unref(settings);
    return true;
}

} // namespace velmora
