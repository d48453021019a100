#include "logQuantityVc.h"

#include "Clock.h"
#include "RecordFormats.h"
#include "RoutineRows.h"
#include "Style.h"
#include "TextCatalogue.h"
#include "UsageLog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace velmora {

logQuantityVc::logQuantityVc(RoutineContext ctx, QWidget* parent)
    : QFrame(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("logQuantityVc"));
    QFrame* card = style::overlayCard(this);
    auto* layout = static_cast<QVBoxLayout*>(card->layout());
    lblTitle = style::title(card, "lblTitle");
    lblTitle->setMinimumWidth(560);
    lblSubTitle = style::body(card, "lblSubTitle");
    textFieldCount = new QLineEdit(card);
    textFieldCount->setObjectName(QStringLiteral("textFieldCount"));
    textFieldCount->setAlignment(Qt::AlignCenter);
    textFieldCount->setAccessibleName(QStringLiteral("textFieldCount"));
    btnOk = style::primaryButton(card, "btnOk");
    btnCancel = style::quietButton(card, "btnCancel");
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnOk);
    buttons->addStretch();
    layout->addWidget(lblTitle);
    layout->addWidget(lblSubTitle);
    layout->addWidget(textFieldCount, 0, Qt::AlignHCenter);
    layout->addLayout(buttons);

    connect(textFieldCount, &QLineEdit::textEdited, this, &logQuantityVc::controlTextDidChange);
    connect(btnOk, &QPushButton::clicked, this, &logQuantityVc::btnOkClicked);
    connect(btnCancel, &QPushButton::clicked, this, &logQuantityVc::btnCancelClicked);
}

void logQuantityVc::resetData(const QString& itemName, const QString& duration,
                              const std::optional<QString>& question, CURRENTSTATE currentState)
{
    lCurrentState = currentState;
    // The catalogue may have arrived since the screen was built.
    lblTitle->setText(c.texts.text("logQuantityInfo", "title", QStringLiteral("Log Quantity of activity")));
    btnOk->setText(c.texts.text("logQuantityInfo", "buttonOkText", QStringLiteral("OK")));
    btnCancel->setText(c.texts.text("logQuantityInfo", "buttonCancelText", QStringLiteral("Cancel")));
    name = itemName;
    durationInSeconds = duration;
    textFieldCount->clear();
    logQuantityQuestion =
        question && !question->isEmpty() ? *question : QStringLiteral("How many <activity> did you do?");
    lblSubTitle->setText(QString(logQuantityQuestion).replace(QLatin1String("<activity>"), name));
    textFieldCount->setFocus();
    textFieldCount->setCursorPosition(0);
    btnOk->setEnabled(false);
}

QString logQuantityVc::normalisedCount(const QString& typed)
{
    // The leading number stands for the whole; anything else reads as 0.
    static const QRegularExpression leading(QStringLiteral("^\\s*([+-]?[0-9]+)"));
    const QRegularExpressionMatch m = leading.match(typed);
    QString value = QStringLiteral("0");
    if (m.hasMatch()) {
        bool ok = false;
        const qlonglong n = m.captured(1).toLongLong(&ok);
        value = ok ? QString::number(n) : QStringLiteral("9999");
    }
    return value.size() > 4 ? QStringLiteral("9999") : value;
}

void logQuantityVc::controlTextDidChange()
{
    const QString value = normalisedCount(textFieldCount->text());
    if (value != textFieldCount->text())
        textFieldCount->setText(value);
    btnOk->setEnabled(!textFieldCount->text().isEmpty());
}

void logQuantityVc::btnOkClicked()
{
    QString logType;
    if (!lCurrentState || lCurrentState == CURRENTSTATE::_ACTIVITY_)
        logType = QStringLiteral("break");
    else if (lCurrentState == CURRENTSTATE::_MORNING_HABIT_)
        logType = QStringLiteral("morning routine");
    else if (lCurrentState == CURRENTSTATE::_EVENING_HABIT_)
        logType = QStringLiteral("evening routine");
    addItemRow(c, logType, name, durationInSeconds, logQuantityQuestion, textFieldCount->text());
    removeView();
}

void logQuantityVc::btnCancelClicked()
{
    removeView();
}

void logQuantityVc::removeView()
{
    hide();
    Q_EMIT dismissed();
}

} // namespace velmora
