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
    const QUrl parsed(url, QUrl::StrictMode);
    if (!parsed.isValid())
        return {};
    QString host = parsed.host();
    host.remove(QStringLiteral("www."));
    return host;
}

bool urlValidation::isUrlValid(const QString& urlToCheck, const QString& allowUrl, const QString& domain)
{
    QString pattern = allowUrl;
    if (pattern.contains(QStringLiteral("http")))
        pattern = getDomainFromUrl(pattern);
    if (pattern.contains(QStringLiteral("file://")))
        return urlToCheck.contains(QStringLiteral("://")) && wildcard(urlToCheck, pattern);
    if (pattern.contains(u'*'))
        return wildcard(domain, pattern);
    return wildcard(domain, u'*' + pattern + u'*');
}

} // namespace velmora
