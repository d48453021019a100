#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>

namespace velmora {

// One way in which a settings document breaks its schema.
struct SchemaError
{
    QString path; // "morningHabits[0].durationSeconds"; empty for the document itself
    QString message;

    bool operator==(const SchemaError&) const = default;
};

struct SettingsValidation
{
    // Set when the schema itself could not be understood; no document passes then.
    QString schemaProblem;
    QList<SchemaError> errors;

    bool isValid() const { return schemaProblem.isEmpty() && errors.isEmpty(); }
    // One line per error, "path: message", for an alert's informative text.
    QString describe() const;
};

// Checks the document against a JSON schema (draft 7). The schema arrives from the
// network, so a schema that cannot be parsed is answered as a problem, never a crash.
SettingsValidation validateSettings(const QJsonObject& document, const QJsonObject& schema);

} // namespace velmora
