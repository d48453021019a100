#pragma once

#include "FocusSummary.h"

#include <functional>
#include <QDateTime>
#include <QWidget>

class QLabel;
class QPushButton;
class QTableWidget;

namespace velmora {

class TextCatalogue;

// The evening look back before the shut-off goes on: how many focus blocks the
// user finished since the morning and how long he focused, and, one click
// further, his blocks with his own words and his break activities with their
// quantities. Everything is read back from the usage log at each appearance.
class focusSummaryVc : public QWidget
{
    Q_OBJECT
public:
    focusSummaryVc(const TextCatalogue& texts, QWidget* parent = nullptr);

    // Reads the log again and shows the collapsed view: title and the button
    // that opens the tables. `boundary` is this morning's start time.
    void viewWillAppear(const QString& usageLogPath, const QDateTime& boundary);
    // Opens the tables; there is no way back on this screen.
    void btnClickHereToSeeClicked();
    void btnContinueClicked();

    std::function<void()> onContinue;

    const FocusSummaryData& summary() const { return m_summary; }

    QLabel* lblTitle = nullptr;
    QPushButton* btnClickHere = nullptr;
    QLabel* lblTotalFocusTime = nullptr;
    QLabel* lblFocusSummary = nullptr;
    QLabel* lblActivitySummary = nullptr;
    // Each table scrolls itself; the scroll views only hold them, so that they
    // show and hide as one with their table.
    QWidget* scrollViewFocusSummary = nullptr;
    QTableWidget* tblViewFocusSummary = nullptr;
    QWidget* scrollViewActivitySummary = nullptr;
    QTableWidget* tblViewActivitySummary = nullptr;
    QPushButton* btnContinue = nullptr;

private:
    QString text(const char* key, const QString& fallback) const;
    void reloadFocusTable();
    void reloadActivityTable();

    const TextCatalogue& m_texts;
    FocusSummaryData m_summary;
};

} // namespace velmora
