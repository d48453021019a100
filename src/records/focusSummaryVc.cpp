#include "focusSummaryVc.h"

#include "RecordFormats.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <limits>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace velmora {

namespace {

QTableWidget* makeTable(QWidget* holder, const char* objectName, int columns)
{
    auto* layout = new QVBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* table = new QTableWidget(0, columns, holder);
    table->setObjectName(QLatin1String(objectName));
    table->setAccessibleName(QLatin1String(objectName));
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setFocusPolicy(Qt::NoFocus);
    table->setWordWrap(true);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    layout->addWidget(table);
    return table;
}

QWidget* makeHolder(QWidget* parent, const char* objectName)
{
    auto* holder = new QWidget(parent);
    holder->setObjectName(QLatin1String(objectName));
    return holder;
}

void setCell(QTableWidget* table, int row, int column, const QString& text)
{
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled);
    item->setToolTip(text);
    table->setItem(row, column, item);
}

QString durationText(qint64 seconds)
{
    const qint64 limit = std::numeric_limits<int>::max();
    return getStringTimeFromSeconds(static_cast<int>(qBound(-limit, seconds, limit)));
}

} // namespace

focusSummaryVc::focusSummaryVc(const TextCatalogue& texts, QWidget* parent)
    : QWidget(parent)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("focusSummaryVc"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(48, 32, 48, 32);
    layout->setSpacing(16);

    lblTitle = style::title(this, "lblTitle");
    btnClickHere = style::quietButton(this, "btnClickHere");
    lblTotalFocusTime = style::body(this, "lblTotalFocusTime");
    lblFocusSummary = style::body(this, "lblFocusSummary");
    scrollViewFocusSummary = makeHolder(this, "scrollViewFocusSummary");
    tblViewFocusSummary = makeTable(scrollViewFocusSummary, "tblViewFocusSummary", 5);
    lblActivitySummary = style::body(this, "lblActivitySummary");
    scrollViewActivitySummary = makeHolder(this, "scrollViewActivitySummary");
    tblViewActivitySummary = makeTable(scrollViewActivitySummary, "tblViewActivitySummary", 6);
    btnContinue = style::primaryButton(this, "btnContinue");

    layout->addStretch();
    layout->addWidget(lblTitle);
    layout->addWidget(btnClickHere, 0, Qt::AlignHCenter);
    layout->addWidget(lblTotalFocusTime);
    layout->addWidget(lblFocusSummary);
    layout->addWidget(scrollViewFocusSummary, 2);
    layout->addWidget(lblActivitySummary);
    layout->addWidget(scrollViewActivitySummary, 1);
    layout->addWidget(btnContinue, 0, Qt::AlignHCenter);
    layout->addStretch();

    connect(btnClickHere, &QPushButton::clicked, this, &focusSummaryVc::btnClickHereToSeeClicked);
    connect(btnContinue, &QPushButton::clicked, this, &focusSummaryVc::btnContinueClicked);
}

QString focusSummaryVc::text(const char* key, const QString& fallback) const
{
    return m_texts.text({"focusInfo", "focusSummaryInfo"}, key, fallback);
}

void focusSummaryVc::viewWillAppear(const QString& usageLogPath, const QDateTime& boundary)
{
    lblTotalFocusTime->hide();
    scrollViewFocusSummary->hide();
    scrollViewActivitySummary->hide();
    lblFocusSummary->hide();
    lblActivitySummary->hide();
    btnClickHere->show();

    // The catalogue may have arrived since the last appearance.
    btnClickHere->setText(
        text("buttonClickHereText", QStringLiteral("Click here to see what you achieved.")));
    btnContinue->setText(text("buttonContinueText", QStringLiteral("Continue")));
    lblFocusSummary->setText(text("titleFocusSummaryText", QStringLiteral("Focus Summary:")));
    lblActivitySummary->setText(text("titleActivitySummaryText", QStringLiteral("Activity Summary:")));

    m_summary = readCsv(usageLogPath, boundary);

    lblTotalFocusTime->setText(text("totalFocusTimeText", QStringLiteral("Total focus time: <TIME>"))
                                   .replace(QLatin1String("<TIME>"), m_summary.totalFocusTime));
    lblTitle->setText(
        text("title", QStringLiteral("You completed <COUNT> focus blocks today."))
            .replace(QLatin1String("<COUNT>"), QString::number(m_summary.arrFocusSummaryDic.size())));
    tblViewFocusSummary->setRowCount(0);
    tblViewActivitySummary->setRowCount(0);
}

void focusSummaryVc::btnClickHereToSeeClicked()
{
    btnClickHere->hide();
    scrollViewFocusSummary->show();
    scrollViewActivitySummary->show();
    reloadFocusTable();
    reloadActivityTable();
    lblTotalFocusTime->show();
    lblFocusSummary->show();
    lblActivitySummary->show();
}

void focusSummaryVc::btnContinueClicked()
{
    if (onContinue)
        onContinue();
}

void focusSummaryVc::reloadFocusTable()
{
    tblViewFocusSummary->setHorizontalHeaderLabels({
        text("focusTableColumnFirstText", QStringLiteral("Focus type")),
        text("focusTableColumnSecondText", QStringLiteral("Start Time")),
        text("focusTableColumnThirdText", QStringLiteral("Duration")),
        text("focusTableColumnFourthText", QStringLiteral("Work Achieved")),
        text("focusTableColumnFifthText", QStringLiteral("Distractions encountered")),
    });
    const QList<SummaryDic>& rows = m_summary.arrFocusSummaryDic;
    tblViewFocusSummary->clearContents();
    tblViewFocusSummary->setRowCount(static_cast<int>(rows.size()));
    for (int r = 0; r < rows.size(); ++r) {
        const SummaryDic& row = rows[r];
        setCell(tblViewFocusSummary, r, 0, row.value(QStringLiteral("Activity")));
        setCell(tblViewFocusSummary, r, 1, row.value(QStringLiteral("Start Time")));
        // A duration that is no number leaves its cell empty.
        if (const auto seconds = recordInteger(row.value(QStringLiteral("Duration in seconds"))))
            setCell(tblViewFocusSummary, r, 2, durationText(*seconds));
        setCell(tblViewFocusSummary, r, 3, row.value(QStringLiteral("Work achieved")));
        setCell(tblViewFocusSummary, r, 4, row.value(QStringLiteral("Distractions encountered")));
    }
}

void focusSummaryVc::reloadActivityTable()
{
    tblViewActivitySummary->setHorizontalHeaderLabels({
        text("activityTableColumnFirstText", QStringLiteral("Activity")),
        text("activityTableColumnSecondText", QStringLiteral("Total Quantity")),
        text("activityTableColumnThirdText", QStringLiteral("Average")),
        text("activityTableColumnFourthText", QStringLiteral("Max")),
        text("activityTableColumnFifthText", QStringLiteral("Min")),
        text("activityTableColumnSixthText", QStringLiteral("Total Duration")),
    });
    const QList<SummaryDic>& rows = m_summary.arrActivitySummaryDic;
    tblViewActivitySummary->clearContents();
    tblViewActivitySummary->setRowCount(static_cast<int>(rows.size()));
    for (int r = 0; r < rows.size(); ++r) {
        const SummaryDic& row = rows[r];
        int column = 0;
        for (const char* key : {"Activity", "totalQuantity", "average", "max", "min"})
            setCell(tblViewActivitySummary, r, column++, row.value(QLatin1String(key)));
        const qint64 total = recordInteger(row.value(QStringLiteral("totalDuration"))).value_or(0);
        setCell(tblViewActivitySummary, r, column, durationText(total));
    }
}

} // namespace velmora
