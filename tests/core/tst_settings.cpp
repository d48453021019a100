#include "DebugLog.h"
#include "FakePorts.h"
#include "MessageCapture.h"
#include "PreferenceKeys.h"
#include "SettingsLoader.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

using namespace velmora;
using namespace velmora::test;

Q_DECLARE_METATYPE(velmora::Time)

class SettingsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void getTimeFromString_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Time>("expected");
        QTest::newRow("hour only") << "7" << Time{7, 0, 0};
        QTest::newRow("with seconds") << "07:30:15" << Time{7, 30, 15};
        QTest::newRow("out of range kept") << "25:99" << Time{25, 99, 0};
        QTest::newRow("one bad part") << "07:xx:10" << Time{7, 0, 10};
        QTest::newRow("four parts") << "1:2:3:4" << Time{0, 0, 0};
        QTest::newRow("empty") << "" << Time{0, 0, 0};
        QTest::newRow("blank inside") << " 7:30" << Time{0, 30, 0};
        QTest::newRow("too large for an integer") << "99999999999:5" << Time{0, 5, 0};
    }

    void getTimeFromString()
    {
        QFETCH(QString, text);
        QFETCH(Time, expected);
        QCOMPARE(velmora::getTimeFromString(text), expected);
    }

    void fieldsOfTheWrongTypeTakeTheirDefaults()
    {
        const RunState s = load(QString::fromUtf8(R"({
            "morningHabits": [{"name": 5, "durationSeconds": "60", "videoUrl": "x",
                               "logQuantity": "yes", "logQuantityQuestion": 3, "allowedApps": ["a", 2]},
                              {"name": "Stretch", "durationSeconds": 60.5, "allowedApps": ["/usr/share/applications/x.desktop"],
                               "logQuantityQuestion": "How many?"}],
            "breakActivities": [{"name": "Walk", "includeInEveryBreak": 1, "isOfficeFriendly": null}],
            "breakAfterMinutes": "50", "startTime": 7, "shutOffTime": "22:00"})"));
        QCOMPARE(s.arrAllMorningHabits.size(), 2);
        const habit& bad = s.arrAllMorningHabits[0];
        QCOMPARE(bad.name, QString());
        QCOMPARE(bad.durationSeconds, 0);
        QVERIFY(bad.urlsArray.isEmpty());
        QVERIFY(!bad.logQuantity);
        QVERIFY(!bad.logQuantityQuestion.has_value());
        QVERIFY(!bad.openSpecificApps);
        const habit& good = s.arrAllMorningHabits[1];
        QCOMPARE(good.durationSeconds, 0); // not a whole number
        QVERIFY(good.openSpecificApps);
        QCOMPARE(*good.logQuantityQuestion, u"How many?"_s);
        QCOMPARE(s.arrAllbreakActivities.size(), 1);
        QVERIFY(!s.arrAllbreakActivities[0].IncludeInEveryBreak);
        QVERIFY(!s.arrAllbreakActivities[0].isOfficeFriendly);
        QCOMPARE(s.breakAfterMinutes, 0);
        QVERIFY(!s.startTime.has_value());
        QCOMPARE(*s.shutOffTime, (Time{22, 0, 0}));
    }

    void randomChoiceNeedsUsableChoices_data()
    {
        QTest::addColumn<QString>("activity");
        QTest::addColumn<bool>("isRandomChoice");
        QTest::addColumn<int>("choices");
        QTest::newRow("two choices")
            << R"({"type": "random-choice", "choices": [{"name": "A"}, {"name": "B"}]})" << true << 2;
        QTest::newRow("empty choices") << R"({"type": "random-choice", "choices": []})" << false << 0;
        QTest::newRow("other type keeps its choices")
            << R"({"type": "plain", "choices": [{"name": "A"}]})" << false << 1;
        QTest::newRow("choice not an object")
            << R"({"type": "random-choice", "choices": ["A"]})" << false << 0;
    }

    void randomChoiceNeedsUsableChoices()
    {
        QFETCH(QString, activity);
        QFETCH(bool, isRandomChoice);
        QFETCH(int, choices);
        const RunState s = load(QString::fromUtf8(R"({"breakActivities": [%1]})").arg(activity));
        QCOMPARE(s.arrAllbreakActivities.size(), 1);
        QCOMPARE(s.arrAllbreakActivities[0].isRandomChoice, isRandomChoice);
        QCOMPARE(s.arrAllbreakActivities[0].choices.size(), choices);
    }

    void listOfTheWrongShapeIsEmpty_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("object") << R"({"name": "Water"})";
        QTest::newRow("array with a string") << R"([{"name": "Water"}, "Stretch"])";
    }

    void listOfTheWrongShapeIsEmpty()
    {
        QFETCH(QString, value);
        const RunState s = load(
            QString::fromUtf8(R"({"morningHabits": %1, "eveningHabits": [{"name": "Journal"}]})").arg(value));
        QVERIFY(s.arrAllMorningHabits.isEmpty());
        QCOMPARE(s.arrAllEveningHabits.size(), 1);
    }

    // The packaged day applies until a document is saved; a malformed saved document
    // means an empty schedule, not the packaged day.
    void savedOrPackagedDocument_data()
    {
        QTest::addColumn<QVariant>("saved");
        QTest::addColumn<QByteArray>("packaged");
        QTest::addColumn<bool>("packagedApplies");
        const QByteArray day = R"({"morningHabits": [{"name": "Water"}], "startTime": "6:45",
                                   "shutOffTime": "22:00"})";
        QTest::newRow("nothing saved") << QVariant() << day << true;
        QTest::newRow("nothing saved, packaged not JSON") << QVariant() << "not json"_ba << false;
        QTest::newRow("not JSON") << QVariant(u"{\"morningHabits\": ["_s) << day << false;
        QTest::newRow("JSON array") << QVariant(u"[1, 2]"_s) << day << false;
        QTest::newRow("empty text") << QVariant(QString()) << day << false;
        // A value that is no text counts as none saved.
        QTest::newRow("stored as a number") << QVariant(42) << day << true;
    }

    void savedOrPackagedDocument()
    {
        QFETCH(QVariant, saved);
        QFETCH(QByteArray, packaged);
        QFETCH(bool, packagedApplies);
        const MessageCapture output;
        QByteArray shown;
        const RunState s = load(saved, packaged, &shown);
        // The editors are shown the document the day was built from.
        QCOMPARE(shown, saved.typeId() == QMetaType::QString ? saved.toString().toUtf8() : packaged);
        QCOMPARE(s.arrAllMorningHabits.size(), packagedApplies ? 1 : 0);
        QCOMPARE(s.startTime, packagedApplies ? std::optional(Time{6, 45, 0}) : std::nullopt);
        QCOMPARE(s.shutOffTime.has_value(), packagedApplies);
        QVERIFY2(!output.all().contains(u"Water"), qPrintable(output.all())); // the user's day stays private
    }

    void rereadKeepsTimesTheDocumentLacks()
    {
        RunState s;
        applySettingsDocument(s, QJsonDocument::fromJson(R"({"startTime": "07:00", "breakAfterMinutes": 30,
            "morningHabits": [{"name": "A"}, {"name": "B"}]})")
                                     .object());
        applySettingsDocument(s, QJsonDocument::fromJson(R"({"morningHabits": [{"name": "A"}]})").object());
        QCOMPARE(s.arrAllMorningHabits.size(), 1);
        QCOMPARE(*s.startTime, (Time{7, 0, 0}));
        QCOMPARE(s.breakAfterMinutes, 30);
    }

private:
    RunState load(const QVariant& saved, const QByteArray& packaged = "{}", QByteArray* shown = nullptr)
    {
        MemoryPreferences preferences;
        if (saved.isValid())
            preferences.setValue(keys::kUserdefaultsSelectedJson, saved);
        const QString path = dir.filePath(u"settings.json"_s);
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(packaged);
        file.close();
        RunState state;
        DebugLog log(clock, dir.filePath(u"log.txt"_s));
        readSettingsJsonDictionary(state, preferences, path, log);
        if (shown)
            *shown = settingsDocumentText(preferences, path);
        return state;
    }

    FakeClock clock;
    QTemporaryDir dir;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
