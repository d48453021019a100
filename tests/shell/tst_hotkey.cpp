#include "FakePorts.h"
#include "HotKey.h"
#include "HotKeys.h"
#include "HotKeysController.h"

#include <map>
#include <memory>
#include <QSet>
#include <QTest>

using namespace velmora;

Q_DECLARE_METATYPE(std::optional<velmora::Key>)

namespace {

// The shared fake, told to refuse when asked, counting grabs and refusing to give back
// a grab it never made.
struct CountingHotKeys : test::FakeHotKeys
{
    quint32 registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                          Handler released) override
    {
        ++registrations;
        return refuse ? 0
                      : FakeHotKeys::registerChord(qtKey, modifiers, std::move(pressed), std::move(released));
    }
    void unregisterChord(quint32 handle) override { QCOMPARE(chords.remove(handle), 1); }

    bool refuse = false;
    int registrations = 0;
};

const KeyCombo ctrlSuperJ(Key::j, Qt::ControlModifier | Qt::MetaModifier);

} // namespace

class TestHotKey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyKeyRoundTripsThroughItsCode()
    {
        const std::map<Key, Key> leftTwin = {{Key::rightCommand, Key::command},
                                             {Key::rightOption, Key::option},
                                             {Key::rightControl, Key::control},
                                             {Key::rightShift, Key::shift}};
        QSet<quint32> codes;
        for (Key key : allKeys()) {
            const quint32 code = keyCode(key);
            const auto twin = leftTwin.find(key);
            QCOMPARE(keyFromKeyCode(code), twin == leftTwin.end() ? key : twin->second);
            QVERIFY2(twin != leftTwin.end() || !codes.contains(code), qPrintable(description(key)));
            codes.insert(code);
            QCOMPARE(description(*keyFromString(description(key))), description(key));
        }
        QCOMPARE(keyFromKeyCode(quint32(Qt::Key_unknown)), std::nullopt);
    }

    // Spellings the round trip above does not reach: names, and a digit that the main
    // keyboard and the keypad share.
    void keySpellings_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<std::optional<Key>>("expected");

        QTest::newRow("name") << u"return"_qs << std::optional(Key::return_);
        QTest::newRow("digit is the main key") << u"0"_qs << std::optional(Key::zero);
        QTest::newRow("empty") << QString() << std::optional<Key>();
        QTest::newRow("no such key") << u"f21"_qs << std::optional<Key>();
    }

    void keySpellings()
    {
        QFETCH(QString, text);
        QFETCH(std::optional<Key>, expected);
        QCOMPARE(keyFromString(text), expected);
    }

    void dictionaryRoundTrip()
    {
        for (const KeyCombo& combo : {ctrlSuperJ, KeyCombo(Key::keypadEnter, Qt::ShiftModifier)}) {
            QCOMPARE(KeyCombo::fromDictionary(combo.dictionary()), combo);
            // As a JSON document hands numbers back.
            const QVariantMap asDoubles = {{u"keyCode"_qs, double(combo.keyCode)},
                                           {u"modifiers"_qs, double(combo.modifiers)}};
            QCOMPARE(KeyCombo::fromDictionary(asDoubles), combo);
        }
    }

    void fromDictionaryRefusesBadMaps_data()
    {
        QTest::addColumn<QVariant>("keyCode");
        QTest::addColumn<QVariant>("modifiers");

        const QVariant j = int(Qt::Key_J), ctrl = int(Qt::ControlModifier);
        QTest::newRow("no keyCode") << QVariant() << ctrl;
        QTest::newRow("keyCode as string") << QVariant(u"74"_qs) << ctrl;
        QTest::newRow("beyond 32 bits") << QVariant(qlonglong(1) << 32) << ctrl;
        QTest::newRow("unknown modifier bits") << j << QVariant(0x1);
    }

    void fromDictionaryRefusesBadMaps()
    {
        QFETCH(QVariant, keyCode);
        QFETCH(QVariant, modifiers);
        QVariantMap map;
        if (keyCode.isValid())
            map.insert(u"keyCode"_qs, keyCode);
        if (modifiers.isValid())
            map.insert(u"modifiers"_qs, modifiers);
        QCOMPARE(KeyCombo::fromDictionary(map), std::nullopt);
    }

    void pressAndReleaseReachTheirHandlers_data()
    {
        QTest::addColumn<bool>("refuse");
        QTest::addColumn<bool>("withUp");
        QTest::addColumn<bool>("pressed");
        QTest::addColumn<QString>("expected");

        QTest::newRow("release") << false << true << false << u"up"_qs;
        QTest::newRow("release without up handler") << false << false << false << QString();
        QTest::newRow("refused grab") << true << true << true << QString();
    }

    void pressAndReleaseReachTheirHandlers()
    {
        QFETCH(bool, refuse);
        QFETCH(bool, withUp);
        QFETCH(bool, pressed);
        QFETCH(QString, expected);

        CountingHotKeys port;
        port.refuse = refuse;
        HotKeysController controller(port);
        QString ran;
        HotKey hotKey(controller, ctrlSuperJ, [&] { ran += u"down"; });
        if (withUp)
            hotKey.setKeyUpHandler([&] { ran += u"up"; });

        if (!refuse) {
            const CountingHotKeys::Chord chord = port.chords.value(port.last);
            (pressed ? chord.pressed : chord.released)();
        }
        QCOMPARE(ran, expected);

        ran.clear();
        QCOMPARE(controller.hotKeys().size(), std::size_t(1));
        const quint32 id = controller.hotKeys().begin()->first;
        QCOMPARE(controller.handleHotKeyEvent(id, pressed), !expected.isEmpty());
        QCOMPARE(ran, expected);
        QVERIFY(!controller.handleHotKeyEvent(id + 1, pressed));
    }

    // A keypad key is grabbed with the keypad flag, again after a pause.
    void pausedHotKeyIsGivenBackAndGrabbedAgain()
    {
        CountingHotKeys port;
        HotKeysController controller(port);
        int presses = 0;
        HotKey hotKey(controller, KeyCombo(Key::keypad0, Qt::ControlModifier), [&] { ++presses; });
        const quint32 firstId = controller.hotKeys().begin()->first;

        hotKey.setPaused(true);
        QVERIFY(port.chords.empty());
        QVERIFY(!controller.handleHotKeyEvent(firstId, true));

        hotKey.setPaused(false);
        QCOMPARE(port.registrations, 2);
        QVERIFY(!controller.handleHotKeyEvent(firstId, true));
        const CountingHotKeys::Chord chord = port.chords.value(port.last);
        QCOMPARE(chord.key, int(Qt::Key_0));
        QCOMPARE(chord.modifiers, Qt::ControlModifier | Qt::KeypadModifier);
        chord.pressed();
        QCOMPARE(presses, 1);
    }

    void destroyingUnregistersEvenFromItsOwnHandler()
    {
        CountingHotKeys port;
        HotKeysController controller(port);
        auto hotKey = std::make_unique<HotKey>(controller, ctrlSuperJ);
        QString log;
        // The handler reads its own captures after its HotKey is gone.
        hotKey->setKeyDownHandler([&, word = u"pressed"_qs] {
            hotKey.reset();
            log += word;
        });
        port.chords.value(port.last).pressed();
        QCOMPARE(log, u"pressed"_qs);
        QVERIFY(port.chords.empty());
        QVERIFY(controller.hotKeys().empty());
    }
};

QTEST_GUILESS_MAIN(TestHotKey)
#include "tst_hotkey.moc"
