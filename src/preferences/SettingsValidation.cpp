#include "SettingsValidation.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QSet>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <regex>
#include <unordered_map>
#include <valijson/adapters/qtjson_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#if !VALIJSON_USE_EXCEPTIONS
#error "valijson aborts on a bad schema without VALIJSON_USE_EXCEPTIONS"
#endif

using namespace Qt::StringLiterals;

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

// std::regex, which the validator uses, recurses for every character it matches
// in its default mode: a long text against a pattern like "(a|b)*" runs out of an
// ordinary stack. So the validator never matches a long text that way: its
// "pattern"s arrive compiled in the polynomial mode, which walks the text in a
// loop; "patternProperties" become the "properties" of the document's keys they
// match; a date or time "format", whose fixed expressions recurse per digit,
// applies only to texts short enough; references, which it matches against a
// fixed expression too, are kept short.
constexpr qsizetype kMaxTextLength = 10'000;
constexpr qsizetype kMaxPatternLength = 1'000;
constexpr qsizetype kMaxReferenceLength = 1'000;
constexpr int kMaxFormattedLength = 64;

std::regex loopingRegex(const QString& pattern)
{
    return std::regex(pattern.toStdString(), std::regex::ECMAScript | std::regex_constants::__polynomial);
}

#ifdef VELMORA_VALIJSON_REGEX_ENGINE
// Later valijson takes its expression engine as a parameter: this one runs in the
// same non-recursive mode as the expressions compiled here.
struct LoopingRegexEngine
{
    explicit LoopingRegexEngine(const std::string& pattern)
        : regex(loopingRegex(QString::fromStdString(pattern)))
    {
    }
    explicit LoopingRegexEngine(std::regex compiled)
        : regex(std::move(compiled))
    {
    }
    static bool search(const std::string& text, const LoopingRegexEngine& engine)
    {
        return std::regex_search(text, engine.regex);
    }
    std::regex regex;
};
using RegexCache = std::unordered_map<std::string, LoopingRegexEngine>;
using Visitor = valijson::ValidationVisitor<valijson::adapters::QtJsonAdapter, LoopingRegexEngine>;
#else
using RegexCache = std::unordered_map<std::string, std::regex>;
using Visitor = valijson::ValidationVisitor<valijson::adapters::QtJsonAdapter>;
#endif

void collectKeys(const QJsonValue& value, QSet<QString>& keys)
{
    if (value.isArray()) {
        for (const QJsonValue& item : value.toArray())
            collectKeys(item, keys);
        return;
    }
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        keys.insert(it.key());
        collectKeys(it.value(), keys);
    }
}

// The schema as the validator may safely meet it (see above), for a document with
// these keys. Throws std::regex_error for a pattern that cannot be compiled so.
QJsonValue safeSchema(const QJsonValue& node, const QSet<QString>& keys, RegexCache& cache)
{
    if (node.isArray()) {
        QJsonArray items;
        for (const QJsonValue& item : node.toArray())
            items.append(safeSchema(item, keys, cache));
        return items;
    }
    if (!node.isObject())
        return node;
    static const QStringList values{u"enum"_s, u"const"_s, u"default"_s, u"examples"_s};
    static const QStringList maps{u"properties"_s, u"patternProperties"_s, u"definitions"_s, u"$defs"_s,
                                  u"dependencies"_s};
    const QJsonObject object = node.toObject();
    QJsonObject safe;
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (values.contains(it.key()) || (maps.contains(it.key()) && !it.value().isObject())) {
            safe.insert(it.key(), it.value());
        } else if (maps.contains(it.key())) {
            QJsonObject map;
            const QJsonObject named = it.value().toObject();
            for (auto entry = named.begin(); entry != named.end(); ++entry)
                map.insert(entry.key(), safeSchema(entry.value(), keys, cache));
            safe.insert(it.key(), map);
        } else {
            safe.insert(it.key(), safeSchema(it.value(), keys, cache));
        }
    }
    if (const QJsonValue pattern = safe.value(u"pattern"_s); pattern.isString())
        cache.emplace(pattern.toString().toStdString(), loopingRegex(pattern.toString()));
    if (const QJsonValue patterns = safe.value(u"patternProperties"_s); patterns.isObject()) {
        QJsonObject properties = safe.value(u"properties"_s).toObject();
        const QJsonObject byPattern = patterns.toObject();
        for (auto it = byPattern.begin(); it != byPattern.end(); ++it) {
            const std::regex matcher = loopingRegex(it.key());
            for (const QString& key : keys) {
                if (!std::regex_search(key.toStdString(), matcher))
                    continue;
                const QJsonValue before = properties.value(key);
                properties.insert(
                    key, before.isUndefined()
                             ? it.value()
                             : QJsonValue(QJsonObject{{u"allOf"_s, QJsonArray{before, it.value()}}}));
            }
        }
        safe.remove(u"patternProperties"_s);
        safe.insert(u"properties"_s, properties);
    }
    const QString format = safe.value(u"format"_s).toString();
    if (format == u"date" || format == u"time" || format == u"date-time") {
        QJsonArray all = safe.value(u"allOf"_s).toArray();
        all.append(QJsonObject{{u"if"_s, QJsonObject{{u"maxLength"_s, kMaxFormattedLength}}},
                               {u"then"_s, QJsonObject{{u"format"_s, format}}},
                               {u"else"_s, QJsonObject{{u"not"_s, QJsonObject{}}}}});
        safe.remove(u"format"_s);
        safe.insert(u"allOf"_s, all);
    }
    return safe;
}

// Why the schema cannot be used safely, or nothing. A reference that leads back
// to where it started before reaching a real schema ({"$ref": "#"}) sends the
// schema parser round for ever; a "multipleOf" of 0 divides by zero.
QString schemaFault(const QJsonValue& root, const QJsonValue& node)
{
    if (node.isArray()) {
        for (const QJsonValue& item : node.toArray()) {
            if (const QString fault = schemaFault(root, item); !fault.isEmpty())
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
    for (const char* reference : {"$ref", "$id", "id"}) {
        if (object.value(QLatin1String(reference)).toString().size() > kMaxReferenceLength)
            return QStringLiteral("a reference is longer than %1 characters").arg(kMaxReferenceLength);
    }
    if (object.contains(QLatin1String("patternProperties")) && object.contains(QLatin1String("properties")) &&
        !object.value(QLatin1String("properties")).isObject())
        return QStringLiteral("\"properties\" is not an object");
    QStringList patterns = object.value(QLatin1String("patternProperties")).toObject().keys();
    patterns << object.value(QLatin1String("pattern")).toString();
    for (const QString& pattern : std::as_const(patterns)) {
        if (pattern.size() > kMaxPatternLength)
            return QStringLiteral("a pattern is longer than %1 characters").arg(kMaxPatternLength);
    }
    for (const QJsonValue& value : object) {
        if (const QString fault = schemaFault(root, value); !fault.isEmpty())
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

SettingsValidation validateSafely(const QJsonObject& document, const QJsonObject& schema)
{
    SettingsValidation result;
    QSet<QString> keys;
    collectKeys(document, keys);
    RegexCache patterns;
    valijson::Schema parsed;
    try {
        const QJsonValue safe = safeSchema(schema, keys, patterns);
        valijson::SchemaParser parser(valijson::SchemaParser::kDraft7);
        const valijson::adapters::QtJsonAdapter schemaAdapter{safe};
        parser.populateSchema(schemaAdapter, parsed);
    } catch (const std::exception& e) {
        result.schemaProblem =
            QStringLiteral("The settings schema cannot be read: ") + QString::fromUtf8(e.what());
        return result;
    }
    try {
        // The validator's own front, without its cache of default-mode expressions.
        valijson::ValidationResults results;
        const valijson::adapters::QtJsonAdapter target{QJsonValue(document)};
        Visitor visitor(target, std::vector<std::string>(1, "<root>"), true, &results, patterns);
        if (!visitor.validateSchema(parsed))
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
    if (const QString fault = schemaFault(schema, schema); !fault.isEmpty()) {
        result.schemaProblem = QStringLiteral("The settings schema cannot be read: ") + fault;
        return result;
    }
    if (const auto path = overlongText(document, QString())) {
        result.errors = {{*path, QStringLiteral("Text longer than %1 characters").arg(kMaxTextLength)}};
        return result;
    }
    return validateSafely(document, schema);
}

} // namespace velmora
