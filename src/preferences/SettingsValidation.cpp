#include "SettingsValidation.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QStringList>
#include <QThread>
#include <QUrl>

#include <algorithm>
#include <exception>
#include <memory>
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

// std::regex, which the validator uses for "pattern", recurses for every
// character and every step of the pattern: a long text against a pattern like
// "(a|b)*" runs out of an ordinary stack. The check runs on a thread with a
// stack that holds the longest text and pattern allowed here.
constexpr qsizetype kMaxTextLength = 10'000;
constexpr qsizetype kMaxPatternLength = 1'000;
constexpr uint kValidationStackBytes = 1024u * 1024 * 1024;

// Why the schema cannot be used safely, or nothing. A reference that leads back
// to where it started before reaching a real schema ({"$ref": "#"}) sends the
// schema parser round for ever; a "multipleOf" of 0 divides by zero. Notes on
// the way whether any "pattern" or "patternProperties" needs the deep stack.
QString schemaFault(const QJsonValue& root, const QJsonValue& node, bool& hasPatterns)
{
    if (node.isArray()) {
        for (const QJsonValue& item : node.toArray()) {
            if (const QString fault = schemaFault(root, item, hasPatterns); !fault.isEmpty())
                return fault;
        }
        return {};
    }
    if (!node.isObject())
        return {};
    const QJsonObject object = node.toObject();
    QList<QJsonValue> seen;
    std::optional<QJsonValue> step = node;
    while (step && step->isObject() && step->toObject().value(QLatin1String("$ref")).isString()) {
        if (seen.contains(*step))
            return QStringLiteral("its references go round in a loop");
        seen.append(*step);
        step = resolveLocal(root, step->toObject().value(QLatin1String("$ref")).toString());
    }
    const QJsonValue multipleOf = object.value(QLatin1String("multipleOf"));
    if (multipleOf.isDouble() && !(multipleOf.toDouble() > 0))
        return QStringLiteral("\"multipleOf\" must be greater than 0");
    hasPatterns = hasPatterns || object.contains(QLatin1String("pattern")) ||
                  object.contains(QLatin1String("patternProperties"));
    QStringList patterns = object.value(QLatin1String("patternProperties")).toObject().keys();
    patterns << object.value(QLatin1String("pattern")).toString();
    for (const QString& pattern : std::as_const(patterns)) {
        if (pattern.size() > kMaxPatternLength)
            return QStringLiteral("a pattern is longer than %1 characters").arg(kMaxPatternLength);
    }
    for (const QJsonValue& value : object) {
        if (const QString fault = schemaFault(root, value, hasPatterns); !fault.isEmpty())
            return fault;
    }
    return {};
}

// The path of a text or key over kMaxTextLength, as the validator would name it.
std::optional<QString> overlongText(const QJsonValue& value, const QString& path)
{
    if (value.isString())
        return value.toString().size() > kMaxTextLength ? std::optional<QString>(path) : std::nullopt;
    if (value.isArray()) {
        const QJsonArray items = value.toArray();
        for (qsizetype i = 0; i < items.size(); ++i) {
            if (const auto found = overlongText(items.at(i), path + QStringLiteral("[%1]").arg(i)))
                return found;
        }
    }
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString inner = path.isEmpty() ? it.key() : path + u'.' + it.key();
        if (it.key().size() > kMaxTextLength)
            return path;
        if (const auto found = overlongText(it.value(), inner))
            return found;
    }
    return std::nullopt;
}

SettingsValidation validateOnThisThread(const QJsonObject& document, const QJsonObject& schema)
{
    SettingsValidation result;
    valijson::Schema parsed;
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
    bool hasPatterns = false;
    if (const QString fault = schemaFault(schema, schema, hasPatterns); !fault.isEmpty()) {
        result.schemaProblem = QStringLiteral("The settings schema cannot be read: ") + fault;
        return result;
    }
    if (const auto path = overlongText(document, QString())) {
        result.errors = {{*path, QStringLiteral("Text longer than %1 characters").arg(kMaxTextLength)}};
        return result;
    }
    // Without a pattern the validator stays well within an ordinary stack.
    if (!hasPatterns)
        return validateOnThisThread(document, schema);
    // Stays when the thread cannot be started: nothing passes unchecked.
    result.schemaProblem = QStringLiteral("The settings could not be checked");
    std::unique_ptr<QThread> thread(
        QThread::create([&] { result = validateOnThisThread(document, schema); }));
    thread->setStackSize(kValidationStackBytes);
    thread->start();
    thread->wait();
    return result;
}

} // namespace velmora
