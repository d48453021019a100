#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMovie>
#include <QRegularExpression>
#include <QtEndian>
#include <QTest>

#include <valijson/adapters/qtjson_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

using namespace Qt::Literals::StringLiterals;

namespace {

QByteArray readResource(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QJsonObject readObject(const QString& path)
{
    return QJsonDocument::fromJson(readResource(path)).object();
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    // The welcome flow takes the first intro activity; a wrong shape silently falls
    // back to the built-in intro item.
    void packagedIntroIsUsable()
    {
        const QJsonObject catalogue = readObject(u":/config.json"_s);
        const QJsonObject first = catalogue[u"welcomeInfo"][u"introActivities"].toArray().first().toObject();
        QVERIFY(first.value(u"name").isString() && first.value(u"durationSeconds").toInteger() > 0);
        QVERIFY(first.value(u"videoUrl").isArray());
    }

    // The schema row below checks each item's shape; here the packaged day must also
    // have something in every list, and names the usage log's rows can keep whole.
    void packagedDayIsComplete()
    {
        const QJsonObject settings = readObject(u":/settings.json"_s);
        for (const char* list : {"morningHabits", "eveningHabits", "breakActivities"}) {
            QVERIFY2(!settings.value(QLatin1String(list)).toArray().isEmpty(), list);
            for (const QJsonValue& item : settings.value(QLatin1String(list)).toArray())
                QVERIFY2(!item[u"name"].toString().contains(u','), qPrintable(item[u"name"].toString()));
        }
    }

    void schemaJudgesDocuments_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<bool>("valid");
        const auto row = [](const char* name, const char* document, bool valid) {
            QTest::newRow(name) << QByteArray(document) << valid;
        };
        QTest::newRow("packaged settings") << readResource(u":/settings.json"_s) << true;
        row("empty", "{}", false); // what an unreadable page message becomes
        row("unknown key", R"({"theme": "dark"})", true);
        row("hour only", R"({"startTime": "7"})", true);
        row("with seconds", R"({"shutOffTime": "22:00:30"})", true);
        row("dotted time", R"({"startTime": "7.30"})", false);
        row("time as number", R"({"startTime": 7})", false);
        row("interval as text", R"({"breakAfterMinutes": "50"})", false);
        row("no interval", R"({"breakAfterMinutes": 0})", false);
        row("duration as text", R"({"morningHabits": [{"name": "Run", "durationSeconds": "60"}]})", false);
        row("habit without a name", R"({"morningHabits": [{"name": "", "durationSeconds": 60}]})", false);
        row("videoUrl as one string",
            R"({"eveningHabits": [{"name": "Read", "durationSeconds": 60, "videoUrl": "x"}]})", false);
        row("choice not an object", R"({"breakActivities": [{"name": "Move", "durationSeconds": 30,
                                       "type": "random-choice", "choices": ["Jump"]}]})",
            false);
        row("habits not a list", R"({"morningHabits": {"name": "Run"}})", false);
    }

    void schemaJudgesDocuments()
    {
        QFETCH(QByteArray, document);
        QFETCH(bool, valid);

        const QJsonDocument schemaDoc = QJsonDocument::fromJson(readResource(u":/settings-schema.json"_s));
        valijson::Schema schema;
        try {
            valijson::SchemaParser(valijson::SchemaParser::kDraft7)
                .populateSchema(valijson::adapters::QtJsonAdapter(schemaDoc.object()), schema);
        } catch (const std::exception& e) {
            QFAIL(e.what());
        }
        const QJsonDocument target = QJsonDocument::fromJson(document);
        QVERIFY(target.isObject());
        valijson::ValidationResults results;
        const bool accepted = valijson::Validator().validate(
            schema, valijson::adapters::QtJsonAdapter(target.object()), &results);
        valijson::ValidationResults::Error first;
        QVERIFY2(accepted == valid, results.popError(first) ? first.description.c_str() : "accepted");
    }

    void blockPageShowsQueryAsTextOnly()
    {
        // The query strings come from arbitrary web addresses: markup in them must
        // never be interpreted.
        const QString page =
            QString::fromUtf8(readResource(u":/block.html"_s) + readResource(u":/vlmr-focus.js"_s));
        for (const char* key : {"old_url", "block_type", "focus_mode", "focus_mode_end_time"})
            QVERIFY2(page.contains(u'"' + QLatin1String(key) + u'"'), key);
        QVERIFY(page.contains(u"URLSearchParams"));
        for (const char* sink : {"innerHTML", "outerHTML", "insertAdjacentHTML", "document.write", "eval("})
            QVERIFY2(!page.contains(QLatin1String(sink)), sink);
    }

    // Each asset the routine screens and the notifier ask for is packaged and loads.
    void packagedAssetsLoad_data()
    {
        QTest::addColumn<QString>("path");
        // Row names are the asset names the routine screens ask for.
        for (const char* name :
             {"Smile _Small", "Waking up _ SMall", "Glasses-Otter-250-px_V3", "cheer_250px_trans_centered",
              "Finger-and-Sign-Otter-250px", "Weight-otter-250-px_V2", "Whistle-otter-250-px", "Yawn_small"})
            QTest::newRow(name) << u":/images/%1.gif"_s.arg(
                QString::fromLatin1(name).toLower().replace(QRegularExpression(u"[^a-z0-9]+"_s), u"-"_s));
        for (const char* name : {"afterMorningRoutine", "everyActivity"})
            QTest::newRow(name) << u":/sounds/%1.wav"_s.arg(QLatin1String(name));
    }

    void packagedAssetsLoad()
    {
        QFETCH(QString, path);
        if (path.endsWith(u".wav")) {
            const QByteArray wav = readResource(path);
            const qsizetype data = wav.indexOf("data", 12);
            QVERIFY(wav.startsWith("RIFF") && wav.mid(8, 4) == "WAVE" && data > 0);
            QVERIFY(qFromLittleEndian<quint32>(wav.constData() + data + 4) > 0);
            return;
        }
        QMovie movie(path);
        QVERIFY(movie.isValid() && movie.frameCount() > 1 && movie.jumpToFrame(movie.frameCount() - 1));
    }
};

QTEST_MAIN(TestResources)
#include "tst_resources.moc"
