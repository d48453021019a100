#pragma once

#include "BrowserTabs.h"

#include <QMap>
#include <QVector>

namespace velmora::test {

// Browsers whose extension the test connects, one process (and connection) per
// family; block orders are recorded; asked for its active tab, one answers at once.
class FakeBrowserTabs : public BrowserTabs
{
public:
    QStringList connectedBrowsers() const override { return connected; }
    QList<BrowserConnection> connections() const override
    {
        QList<BrowserConnection> list;
        for (const QString& browser : connected)
            list << BrowserConnection{browser, browser, {}, pids.value(browser), !unfocused.contains(browser),
                                      true,    {}};
        return list;
    }
    std::optional<BrowserTab> activeTab(const QString& browser) const override
    {
        if (!active.contains(browser))
            return std::nullopt;
        return active.value(browser);
    }
    void requestActiveTab(const QString& connection) override
    {
        if (active.contains(connection) && !unfocused.contains(connection))
            Q_EMIT tabChanged(active.value(connection));
    }
    QString focusedBrowser() const override { return focused; }
    void showBlockPage(const BrowserTab& tab, const QString& query) override { blocked.append({tab, query}); }

    void navigate(const QString& browser, const QString& address, const QString& host = {})
    {
        const BrowserTab tab{browser, 1, address, host, browser};
        active.insert(browser, tab);
        Q_EMIT tabChanged(tab);
    }

    QStringList connected;
    QStringList unfocused; // no window the extension sees has the focus
    QMap<QString, qint64> pids;
    QMap<QString, BrowserTab> active;
    QString focused;
    QVector<std::pair<BrowserTab, QString>> blocked;
};

} // namespace velmora::test
