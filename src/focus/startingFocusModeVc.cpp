#include "startingFocusModeVc.h"

#include "Style.h"
#include "TextCatalogue.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

namespace velmora {

QString clampTimeField(const QString& text, int limit)
{
    const int value = qMin(text.toInt(), limit);
    QString result = QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
    if (result.size() > 2)
        result = QString::number(limit);
    return result;
}

startingFocusModeVc::startingFocusModeVc(const TextCatalogue& texts, QWidget* parent)
    : QWidget(parent)
    , m_texts(texts)
{
    setObjectName(QStringLiteral("startingFocusModeVc"));
    lblTitle = style::title(this, "lblTitle");
    lblQuestion = style::body(this, "lblQuestion");
    textViewQuestion = new QPlainTextEdit(this);
    textViewQuestion->setObjectName(QStringLiteral("textViewQuestion"));
    textViewQuestion->setTabChangesFocus(true);
    textViewQuestion->setFixedHeight(72);
    lblQuestion->setBuddy(textViewQuestion);
    lblHowMuchTime = style::body(this, "lblHowMuchTime");

    auto timeField = [this](const char* name) {
        auto* field = new QLineEdit(this);
        field->setObjectName(QLatin1String(name));
        field->setValidator(
            new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,3}")), field));
        field->setAlignment(Qt::AlignCenter);
        field->setFixedWidth(56);
        connect(field, &QLineEdit::textEdited, this, [this, field] { controlTextDidChange(field); });
        return field;
    };
    textFieldHour = timeField("textFieldHour");
    textFieldMinute = timeField("textFieldMinute");
    lblHour = new QLabel(this);
    lblHour->setObjectName(QStringLiteral("lblHour"));
    lblHour->setBuddy(textFieldHour);
    lblMinute = new QLabel(this);
    lblMinute->setObjectName(QStringLiteral("lblMinute"));
    lblMinute->setBuddy(textFieldMinute);
    btnStartFocus = style::primaryButton(this, "btnStartFocus");
    btnStartFocus->setDefault(true);
    connect(btnStartFocus, &QPushButton::clicked, this, [this] { btnStartFocusClicked(); });

    auto* time = new QHBoxLayout;
    time->addStretch();
    time->addWidget(textFieldHour);
    time->addWidget(lblHour);
    time->addSpacing(12);
    time->addWidget(textFieldMinute);
    time->addWidget(lblMinute);
    time->addStretch();

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblTitle);
    layout->addWidget(lblQuestion);
    layout->addWidget(textViewQuestion);
    layout->addWidget(lblHowMuchTime);
    layout->addLayout(time);
    layout->addWidget(btnStartFocus, 0, Qt::AlignHCenter);
    setTabOrder(textViewQuestion, textFieldHour);
    setTabOrder(textFieldHour, textFieldMinute);
    setTabOrder(textFieldMinute, btnStartFocus);
}

QString startingFocusModeVc::text(const char* key, const QString& fallback) const
{
    return m_texts.text({"focusInfo", "startingFocusModeInfo"}, key, fallback);
}

void startingFocusModeVc::ResetData(int focusModeIndex, const QString& type)
{
    focusType = type;
    focusIndex = focusModeIndex;
    style::setText(lblQuestion, text("questionText",
                                     QStringLiteral("What do you plan to achieve during this focus block?")));
    style::setText(lblHowMuchTime, text("howMuchTimeText", QStringLiteral("How much time to focus for:")));
    style::setText(lblHour, text("hoursText", QStringLiteral("hours")));
    style::setText(lblMinute, text("minutesText", QStringLiteral("minutes")));
    style::setText(btnStartFocus, text("buttonStartFocusText", QStringLiteral("Start Focus")));
    // A field is named by the word beside it.
    textFieldHour->setAccessibleName(lblHour->text());
    textFieldMinute->setAccessibleName(lblMinute->text());
    textViewQuestion->setAccessibleName(lblQuestion->text());
    textViewQuestion->clear();
    textFieldHour->setText(QStringLiteral("00"));
    textFieldMinute->setText(QStringLiteral("20"));
    btnStartFocus->setEnabled(true);
    style::setText(lblTitle, fillTemplate(text("title", QStringLiteral("Starting Focus type - <FOCUSTYPE>")),
                                          {{"<FOCUSTYPE>", type}}));
    textViewQuestion->setFocus();
}

void startingFocusModeVc::controlTextDidChange(QLineEdit* field)
{
    field->setText(clampTimeField(field->text(), field == textFieldHour ? 12 : 59));
    btnStartFocus->setEnabled(!(textFieldHour->text() == u"00" && textFieldMinute->text() == u"00"));
}

int startingFocusModeVc::totalMinutes() const
{
    return textFieldHour->text().toInt() * 60 + textFieldMinute->text().toInt();
}

void startingFocusModeVc::btnStartFocusClicked()
{
    if (!btnStartFocus->isEnabled())
        return;
    if (onStart)
        onStart(focusIndex, totalMinutes(), textViewQuestion->toPlainText());
}

} // namespace velmora
