#include "KeyCombo.h"

#include <cmath>
#include <limits>
#include <QMetaType>
#include <QVariant>

namespace velmora {

namespace {

const QString keyCodeField = QStringLiteral("keyCode");
const QString modifiersField = QStringLiteral("modifiers");

constexpr quint32 knownModifiers = quint32(Qt::KeyboardModifierMask);

std::optional<quint32> readUInt32(const QVariant& value)
{
    constexpr auto max = std::numeric_limits<quint32>::max();
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong: {
        const qlonglong number = value.toLongLong();
        if (number < 0 || number > qlonglong(max))
            return std::nullopt;
        return quint32(number);
    }
    case QMetaType::UInt:
    case QMetaType::ULongLong: {
        const qulonglong number = value.toULongLong();
        if (number > max)
            return std::nullopt;
        return quint32(number);
    }
    case QMetaType::Double: {
        // What a JSON document gives for any number.
        const double number = value.toDouble();
        if (!std::isfinite(number) || number < 0 || number > double(max) || std::trunc(number) != number)
            return std::nullopt;
        return quint32(number);
    }
    default:
        return std::nullopt;
    }
}

} // namespace

KeyCombo::KeyCombo(quint32 keyCode, quint32 modifiers)
    : keyCode(keyCode)
    , modifiers(modifiers)
{
}

KeyCombo::KeyCombo(Key key, Qt::KeyboardModifiers modifiers)
    : keyCode(velmora::keyCode(key))
    , modifiers(quint32(modifiers.toInt()))
{
}

std::optional<Key> KeyCombo::key() const
{
    return keyFromKeyCode(keyCode);
}

Qt::KeyboardModifiers KeyCombo::qtModifiers() const
{
    return Qt::KeyboardModifiers::fromInt(int(modifiers));
}

bool KeyCombo::isValid() const
{
    return key().has_value();
}

QString KeyCombo::description() const
{
    QString text;
    const Qt::KeyboardModifiers held = qtModifiers();
    if (held & Qt::ControlModifier)
        text += u"Ctrl+";
    if (held & Qt::AltModifier)
        text += u"Alt+";
    if (held & Qt::ShiftModifier)
        text += u"Shift+";
    if (held & Qt::MetaModifier)
        text += u"Super+";
    if (const std::optional<Key> k = key())
        text += velmora::description(*k);
    return text;
}

QVariantMap KeyCombo::dictionary() const
{
    return {{keyCodeField, QVariant::fromValue(keyCode)}, {modifiersField, QVariant::fromValue(modifiers)}};
}

std::optional<KeyCombo> KeyCombo::fromDictionary(const QVariantMap& map)
{
    const std::optional<quint32> code = readUInt32(map.value(keyCodeField));
    const std::optional<quint32> held = readUInt32(map.value(modifiersField));
    if (!code || !held || (*held & ~knownModifiers) != 0)
        return std::nullopt;
    return KeyCombo(*code, *held);
}

} // namespace velmora
