#pragma once

#include "BrowserTabs.h"

#include <QMap>
#include <QVector>

namespace velmora::test {

// Browsers whose extension the test connects; block orders are recorded.
class FakeBrowserTabs : public BrowserTabs
{
public:
    QStringList connectedBrowsers() const override { return connected; }
    std::optional<BrowserTab> activeTab(const QString& browser) const override
    {
        if (!active.contains(browser))
            return std::nullopt;
        return active.value(browser);
    }
    QString focusedBrowser() const override { return focused; }
    void showBlockPage(const BrowserTab& tab, const QString& query) override { blocked.append({tab, query}); }

    void navigate(const QString& browser, const QString& address)
    {
        const BrowserTab tab{browser, 1, address};
        active.insert(browser, tab);
        Q_EMIT tabChanged(tab);
    }

    QStringList connected;
    QMap<QString, BrowserTab> active;
    QString focused;
    QVector<std::pair<BrowserTab, QString>> blocked;
};

} // namespace velmora::test
