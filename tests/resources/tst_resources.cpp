#include <algorithm>

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

bool isInteger(const QJsonValue& value)
{
    return value.isDouble() && value.toDouble() == double(value.toInteger());
}

bool isStringList(const QJsonValue& value)
{
    if (!value.isArray())
        return false;
    const QJsonArray array = value.toArray();
    return std::all_of(array.begin(), array.end(), [](const QJsonValue& v) { return v.isString(); });
}

// Entries of the catalogue that are data rather than display text.
const QStringList kNonTextEntries{u"welcomeInfo/introActivities"_s};

void collectNonText(const QJsonObject& object, const QString& prefix, QStringList& out)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QString path = prefix.isEmpty() ? it.key() : prefix + u'/' + it.key();
        if (kNonTextEntries.contains(path))
            continue;
        if (it->isObject())
            collectNonText(it->toObject(), path, out);
        else if (!it->isString())
            out << path;
    }
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void catalogueIsText()
    {
        QStringList nonText;
        collectNonText(readObject(u":/config.json"_s), QString(), nonText);
        QCOMPARE(nonText, QStringList());
    }

    void introActivityIsUsable()
    {
        // The welcome flow takes the first entry; a wrong shape silently falls back
        // to the built-in intro item.
        const QJsonValue list =
            readObject(u":/config.json"_s).value(u"welcomeInfo").toObject().value(u"introActivities");
        QVERIFY(list.isArray());
        const QJsonObject first = list.toArray().first().toObject();
        QVERIFY(first.value(u"name").isString());
        QVERIFY(isInteger(first.value(u"durationSeconds")));
        QVERIFY(first.value(u"durationSeconds").toInteger() > 0);
        QVERIFY(isStringList(first.value(u"videoUrl")));
    }

    void routineItemsAreComplete()
    {
        // The packaged day has every list and a break interval; a routine item without a
        // name or a whole-number duration cannot be played.
        const QJsonObject settings = readObject(u":/settings.json"_s);
        QVERIFY(isInteger(settings.value(u"breakAfterMinutes")) &&
                settings.value(u"breakAfterMinutes").toInt() > 0);
        QVERIFY(settings.value(u"startTime").isString() && settings.value(u"shutOffTime").isString());
        for (const char* list : {"morningHabits", "eveningHabits", "breakActivities"}) {
            QVERIFY2(!settings.value(QLatin1String(list)).toArray().isEmpty(), list);
            for (const QJsonValue& item : settings.value(QLatin1String(list)).toArray()) {
                const QJsonObject record = item.toObject();
                const QString name = record.value(u"name").toString();
                QVERIFY2(!name.isEmpty(), list);
                QVERIFY2(isInteger(record.value(u"durationSeconds")), qPrintable(name));
                QVERIFY2(!name.contains(u','), qPrintable(name)); // would split its usage-log row
            }
        }
    }

    void schemaJudgesDocuments_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<bool>("valid");
        QTest::newRow("packaged settings") << readResource(u":/settings.json"_s) << true;
        QTest::newRow("empty") << QByteArray("{}") << false; // what an unreadable page message becomes
        QTest::newRow("unknown key") << QByteArray(R"({"theme": "dark"})") << true;
        QTest::newRow("hour only") << QByteArray(R"({"startTime": "7"})") << true;
        QTest::newRow("with seconds") << QByteArray(R"({"shutOffTime": "22:00:30"})") << true;
        QTest::newRow("dotted time") << QByteArray(R"({"startTime": "7.30"})") << false;
        QTest::newRow("time as number") << QByteArray(R"({"startTime": 7})") << false;
        QTest::newRow("interval as text") << QByteArray(R"({"breakAfterMinutes": "50"})") << false;
        QTest::newRow("duration as text")
            << QByteArray(R"({"morningHabits": [{"name": "Run", "durationSeconds": "60"}]})") << false;
        QTest::newRow("videoUrl as one string")
            << QByteArray(R"({"eveningHabits": [{"name": "Read", "durationSeconds": 60, "videoUrl": "x"}]})")
            << false;
        QTest::newRow("choice not an object")
            << QByteArray(R"({"breakActivities": [{"name": "Move", "durationSeconds": 30,
                              "type": "random-choice", "choices": ["Jump"]}]})")
            << false;
        QTest::newRow("habits not a list") << QByteArray(R"({"morningHabits": {"name": "Run"}})") << false;
    }

    void schemaJudgesDocuments()
    {
        QFETCH(QByteArray, document);
        QFETCH(bool, valid);

        const QJsonDocument schemaDoc = QJsonDocument::fromJson(readResource(u":/settings-schema.json"_s));
        valijson::Schema schema;
        valijson::SchemaParser parser(valijson::SchemaParser::kDraft7);
        try {
            parser.populateSchema(valijson::adapters::QtJsonAdapter(schemaDoc.object()), schema);
        } catch (const std::exception& e) {
            QFAIL(e.what());
        }

        QJsonParseError error{};
        const QJsonDocument target = QJsonDocument::fromJson(document, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        valijson::Validator validator;
        valijson::ValidationResults results;
        const bool accepted =
            validator.validate(schema, valijson::adapters::QtJsonAdapter(target.object()), &results);
        valijson::ValidationResults::Error first;
        QVERIFY2(accepted == valid, results.popError(first) ? first.description.c_str() : "accepted");
    }

    void blockPageShowsQueryAsTextOnly()
    {
        // The query strings come from arbitrary web addresses: markup in them must
        // never be interpreted, and the page must work without a network.
        const QString page =
            QString::fromUtf8(readResource(u":/block.html"_s) + readResource(u":/vlmr-focus.js"_s));
        for (const char* key : {"old_url", "block_type", "focus_mode", "focus_mode_end_time"})
            QVERIFY2(page.contains(u'"' + QLatin1String(key) + u'"'), key);
        QVERIFY(page.contains(u"URLSearchParams"));
        for (const char* sink : {"innerHTML", "outerHTML", "insertAdjacentHTML", "document.write", "eval("})
            QVERIFY2(!page.contains(QLatin1String(sink)), sink);
        for (const char* external : {"src=\"http", "href=\"http", "src=\"//", "href=\"//", "@import", "url("})
            QVERIFY2(!page.contains(QLatin1String(external)), external);
    }

    void animationsPlay_data()
    {
        QTest::addColumn<QString>("path");
        // Row names are the asset names the routine screens ask for.
        for (const char* name :
             {"Smile _Small", "Waking up _ SMall", "Glasses-Otter-250-px_V3", "cheer_250px_trans_centered",
              "Finger-and-Sign-Otter-250px", "Weight-otter-250-px_V2", "Whistle-otter-250-px", "Yawn_small"})
            QTest::newRow(name) << u":/images/%1.gif"_s.arg(
                QString::fromLatin1(name).toLower().replace(QRegularExpression(u"[^a-z0-9]+"_s), u"-"_s));
    }

    void animationsPlay()
    {
        QFETCH(QString, path);
        QVERIFY(QMovie::supportedFormats().contains("gif"));
        QMovie movie(path);
        QVERIFY(movie.isValid());
        QVERIFY(movie.frameCount() > 1);
        QCOMPARE(movie.loopCount(), -1); // for ever
        // Every frame must decode, not only the first.
        for (int frame = 0; frame < movie.frameCount(); ++frame) {
            QVERIFY2(movie.jumpToFrame(frame), qPrintable(QString::number(frame)));
            const QImage image = movie.currentImage();
            QVERIFY(!image.isNull());
            QVERIFY(image.width() <= 250 && image.height() <= 250);
        }
    }

    void soundsAreShortWavs_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("afterMorningRoutine") << u":/sounds/afterMorningRoutine.wav"_s;
        QTest::newRow("everyActivity") << u":/sounds/everyActivity.wav"_s;
    }

    void soundsAreShortWavs()
    {
        QFETCH(QString, path);
        const QByteArray wav = readResource(path);
        QVERIFY(wav.startsWith("RIFF") && wav.mid(8, 4) == "WAVE");
        const auto u16 = [&](qsizetype at) { return qFromLittleEndian<quint16>(wav.constData() + at); };
        const auto u32 = [&](qsizetype at) { return qFromLittleEndian<quint32>(wav.constData() + at); };
        quint32 rate = 0, bytesPerSecond = 0;
        QByteArray samples;
        for (qsizetype at = 12; at + 8 <= wav.size(); at += 8 + ((u32(at + 4) + 1) & ~1u)) {
            const QByteArray id = wav.mid(at, 4);
            if (id == "fmt ") {
                QCOMPARE(u16(at + 8), quint16(1)); // plain PCM
                rate = u32(at + 12);
                bytesPerSecond = u32(at + 16);
                QCOMPARE(u16(at + 22), quint16(16));
            } else if (id == "data") {
                samples = wav.mid(at + 8, u32(at + 4));
                QCOMPARE(samples.size(), qsizetype(u32(at + 4)));
            }
        }
        QCOMPARE(rate, 44100u);
        QVERIFY(bytesPerSecond > 0 && !samples.isEmpty());
        QVERIFY(double(samples.size()) / bytesPerSecond < 1.5);
        int peak = 0;
        for (qsizetype i = 0; i + 1 < samples.size(); i += 2)
            peak = std::max(peak, std::abs(int(qFromLittleEndian<qint16>(samples.constData() + i))));
        QVERIFY2(peak > 3000, "hardly audible");
    }
};

QTEST_MAIN(TestResources)
#include "tst_resources.moc"
