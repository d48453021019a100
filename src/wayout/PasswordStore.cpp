#include "PasswordStore.h"

#include "PreferenceKeys.h"
#include "Preferences.h"

#include <QByteArray>
#include <QStringDecoder>

namespace velmora::password {

bool isSet(const Preferences& preferences)
{
    return preferences.contains(keys::kUserdefaultsAppPassword);
}

void store(Preferences& preferences, const QString& text)
{
    preferences.setValue(keys::kUserdefaultsAppPassword, QString::fromLatin1(text.toUtf8().toBase64()));
}

Check check(const Preferences& preferences, const QString& entered)
{
    if (!isSet(preferences))
        return Check::NotSet;
    // A value edited by hand may be anything, even no text at all.
    const std::optional<QString> stored = preferences.string(keys::kUserdefaultsAppPassword);
    if (!stored)
        return Check::Undecodable;
    const auto decoded =
        QByteArray::fromBase64Encoding(stored->toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return Check::Undecodable;
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(*decoded);
    if (utf8.hasError())
        return Check::Undecodable;
    return text == entered ? Check::Correct : Check::Wrong;
}

} // namespace velmora::password
