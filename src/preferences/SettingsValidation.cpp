#include "SettingsValidation.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <exception>
#include <optional>
#include <valijson/adapters/qtjson_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#if !VALIJSON_USE_EXCEPTIONS
#error "valijson aborts on a bad schema without VALIJSON_USE_EXCEPTIONS"
#endif

namespace velmora {

namespace {

// valijson names the way to a value as "<root>", "[morningHabits]", "[0]", ...
QString pathOf(const std::vector<std::string>& context)
{
    QString path;
    for (const std::string& step : context) {
        const QString part = QString::fromStdString(step);
        if (part == QLatin1String("<root>") || part.size() < 2)
            continue;
        const QString inner = part.mid(1, part.size() - 2);
        bool isIndex = false;
        inner.toInt(&isIndex);
        if (isIndex)
            path += u'[' + inner + u']';
        else
            path += (path.isEmpty() ? QString() : QStringLiteral(".")) + inner;
    }
    return path;
}

// valijson reports an error at every level it passed through ("Failed to validate
// item #0 in array."); the user needs only the innermost one of each chain.
QList<SchemaError> innermost(const valijson::ValidationResults& results)
{
    QList<SchemaError> errors;
    for (auto it = results.begin(); it != results.end(); ++it) {
        bool hasDeeper = false;
        for (auto other = results.begin(); other != results.end(); ++other) {
            if (other->context.size() > it->context.size() &&
                std::equal(it->context.begin(), it->context.end(), other->context.begin())) {
                hasDeeper = true;
                break;
            }
        }
        if (hasDeeper)
            continue;
        const SchemaError error{pathOf(it->context), QString::fromStdString(it->description)};
        if (!errors.contains(error))
            errors.append(error);
    }
    return errors;
}

// The value a local reference ("#", "#/definitions/time") points at, if any.
std::optional<QJsonValue> resolveLocal(const QJsonValue& root, const QString& ref)
{
    if (!ref.startsWith(u'#'))
        return std::nullopt;
    const QString pointer = QUrl::fromPercentEncoding(ref.mid(1).toUtf8());
    if (pointer.isEmpty())
        return root;
    if (!pointer.startsWith(u'/'))
        return std::nullopt;
    QJsonValue at = root;
    for (QString token : pointer.mid(1).split(u'/')) {
        token.replace(QLatin1String("~1"), QLatin1String("/"))
            .replace(QLatin1String("~0"), QLatin1String("~"));
        bool isIndex = false;
        const int index = token.toInt(&isIndex);
        if (at.isObject() && at.toObject().contains(token))
            at = at.toObject().value(token);
        else if (at.isArray() && isIndex && index >= 0 && index < at.toArray().size())
            at = at.toArray().at(index);
        else
            return std::nullopt;
    }
    return at;
}

// A schema whose references lead back to where they started before reaching a
// real schema ({"$ref": "#"}) sends the schema parser round for ever, until the
// stack runs out.
bool hasReferenceLoop(const QJsonValue& root, const QJsonValue& node)
{
    if (node.isArray()) {
        const QJsonArray items = node.toArray();
        return std::any_of(items.begin(), items.end(),
                           [&](const QJsonValue& v) { return hasReferenceLoop(root, v); });
    }
    if (!node.isObject())
        return false;
    const QJsonObject object = node.toObject();
    QList<QJsonValue> seen;
    std::optional<QJsonValue> step = node;
    while (step && step->isObject() && step->toObject().value(QLatin1String("$ref")).isString()) {
        if (seen.contains(*step))
            return true;
        seen.append(*step);
        step = resolveLocal(root, step->toObject().value(QLatin1String("$ref")).toString());
    }
    return std::any_of(object.begin(), object.end(),
                       [&](const QJsonValue& v) { return hasReferenceLoop(root, v); });
}

} // namespace

QString SettingsValidation::describe() const
{
    if (!schemaProblem.isEmpty())
        return schemaProblem;
    QStringList lines;
    for (const SchemaError& e : errors)
        lines << (e.path.isEmpty() ? e.message : e.path + QStringLiteral(": ") + e.message);
    return lines.join(u'\n');
}

SettingsValidation validateSettings(const QJsonObject& document, const QJsonObject& schema)
{
    SettingsValidation result;
    valijson::Schema parsed;
    if (hasReferenceLoop(schema, schema)) {
        result.schemaProblem =
            QStringLiteral("The settings schema cannot be read: its references go round in a loop");
        return result;
    }
    try {
        valijson::SchemaParser parser(valijson::SchemaParser::kDraft7);
        const valijson::adapters::QtJsonAdapter schemaAdapter{QJsonValue(schema)};
        parser.populateSchema(schemaAdapter, parsed);
    } catch (const std::exception& e) {
        result.schemaProblem =
            QStringLiteral("The settings schema cannot be read: ") + QString::fromUtf8(e.what());
        return result;
    }
    try {
        valijson::Validator validator;
        valijson::ValidationResults results;
        const valijson::adapters::QtJsonAdapter target{QJsonValue(document)};
        if (!validator.validate(parsed, target, &results))
            result.errors = innermost(results);
    } catch (const std::exception& e) {
        result.schemaProblem =
            QStringLiteral("The settings schema cannot be used: ") + QString::fromUtf8(e.what());
    }
    return result;
}

} // namespace velmora
