#include "urlValidation.h"

#include <QRegularExpression>
#include <QUrl>

namespace velmora {

bool wildcard(const QString& text, const QString& pattern)
{
    QString expression;
    expression.reserve(pattern.size() * 2);
    for (const QChar c : pattern) {
        if (c == u'*')
            expression += QStringLiteral(".*");
        else if (c == u'?')
            expression += u'.';
        else
            expression += QRegularExpression::escape(QString(c));
    }
    const QRegularExpression re(QRegularExpression::anchoredPattern(expression),
                                QRegularExpression::DotMatchesEverythingOption);
    return re.match(text).hasMatch();
}

QString getDomainFromUrl(const QString& url)
{
    QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid()) {
        // Only the scheme and authority name the host: read them alone, so that
        // nothing after them can make the host unreadable.
        const qsizetype authority = url.indexOf(QStringLiteral("://"));
        if (authority < 0)
            return {};
        qsizetype end = authority + 3;
        while (end < url.size() && !QStringView(u"/?#\\").contains(url.at(end)))
            ++end;
        parsed = QUrl(url.left(end), QUrl::StrictMode);
        if (!parsed.isValid())
            return {};
    }
    QString host = parsed.host();
    host.remove(QStringLiteral("www."));
    return host;
}

bool isReadableEntry(const QString& entry)
{
    return !entry.contains(QStringLiteral("http")) || !getDomainFromUrl(entry).isEmpty();
}

bool matchesAnyEntry(const QString& address, const QString& host, const QStringList& list)
{
    QString domain = host;
    if (domain.isEmpty())
        domain = getDomainFromUrl(address);
    else
        domain.remove(QStringLiteral("www."));
    for (const QString& entry : list) {
        if (urlValidation::isUrlValid(address, entry, domain))
            return true;
    }
    return false;
}

bool urlValidation::isUrlValid(const QString& urlToCheck, const QString& allowUrl, const QString& domain)
{
    QString pattern = allowUrl;
    if (pattern.contains(QStringLiteral("http"))) {
        pattern = getDomainFromUrl(pattern);
        // An entry without a readable host would match every address.
        if (pattern.isEmpty())
            return false;
    }
    if (pattern.contains(QStringLiteral("file://")))
        return urlToCheck.contains(QStringLiteral("://")) && wildcard(urlToCheck, pattern);
    if (pattern.contains(u'*'))
        return wildcard(domain, pattern);
    return wildcard(domain, u'*' + pattern + u'*');
}

} // namespace velmora
