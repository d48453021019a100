#include "addFocusTypeVc.h"

#include "FocusTypeList.h"
#include "Style.h"
#include "TextCatalogue.h"

#include <QColorDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace velmora {

addFocusTypeVc::addFocusTypeVc(FocusPreferencesContext ctx, QWidget* parent)
    : QDialog(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("addFocusTypeVc"));
    setWindowModality(Qt::WindowModal);
    setStyleSheet(style::dialogStyleSheet());
    setMinimumWidth(400);
    lblTitle = style::title(this, "lblTitle");
    lblTitleName = style::body(this, "lblTitleName");
    textFieldFocusType = new QLineEdit(this);
    textFieldFocusType->setObjectName(QStringLiteral("textFieldFocusType"));
    lblTitleName->setBuddy(textFieldFocusType);
    lblTitleColor = style::body(this, "lblTitleColor");
    colorWell = style::quietButton(this, "colorWell");
    lblTitleColor->setBuddy(colorWell);
    lblError = style::body(this, "lblError");
    lblError->setStyleSheet(QStringLiteral("color: #e8a0a0;"));
    btnCancel = style::quietButton(this, "btnCancel");
    btnAdd = style::primaryButton(this, "btnAdd");

    auto* form = new QFormLayout;
    form->addRow(lblTitleName, textFieldFocusType);
    form->addRow(lblTitleColor, colorWell);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnCancel);
    buttons->addWidget(btnAdd);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 20);
    layout->addWidget(lblTitle);
    layout->addLayout(form);
    layout->addWidget(lblError);
    layout->addLayout(buttons);
    setTabOrder(textFieldFocusType, colorWell);
    setTabOrder(colorWell, btnCancel);
    setTabOrder(btnCancel, btnAdd);

    connect(textFieldFocusType, &QLineEdit::textEdited, this, [this] { controlTextDidChange(); });
    connect(colorWell, &QPushButton::clicked, this, [this] { colorWellClicked(); });
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(btnAdd, &QPushButton::clicked, this, [this] { btnAddClicked(); });
    chooseColor = [this](const QColor& current) -> std::optional<QColor> {
        const QColor chosen = QColorDialog::getColor(current, this, lblTitleColor->text());
        return chosen.isValid() ? std::optional(chosen) : std::nullopt;
    };
}

QString addFocusTypeVc::text(const char* key, const QString& fallback) const
{
    return c.texts.text("focusPreferencesInfo", key, fallback);
}

void addFocusTypeVc::viewWillAppear(bool adding, int row)
{
    isAdding = adding;
    selectedRow = row;
    const QString title = isAdding ? text("titleAddFocusType", QStringLiteral("Add Focus Type"))
                                   : text("titleEditFocusType", QStringLiteral("Edit Focus Type"));
    setWindowTitle(title);
    style::setText(lblTitle, title);
    style::setText(lblTitleName, text("titleTitle", QStringLiteral("Title:")));
    style::setText(lblTitleColor, text("titleColor", QStringLiteral("Color:")));
    style::setText(btnCancel, text("buttonCancelText", QStringLiteral("Cancel")));
    style::setText(btnAdd, isAdding ? text("buttonAddText", QStringLiteral("Add"))
                                    : text("buttonSaveText", QStringLiteral("Save")));
    textFieldFocusType->setAccessibleName(lblTitleName->text());
    lblError->hide();
    if (isAdding) {
        textFieldFocusType->clear();
        setColor(QColor(0x3d, 0x8b, 0x6e));
    } else {
        textFieldFocusType->setText(c.focusTypes.name(row));
        setColor(c.focusTypes.color(row));
    }
    // Return is the key of the main button, enabled by a change.
    btnAdd->setDefault(true);
    btnAdd->setEnabled(false);
    textFieldFocusType->setFocus();
}

// The well shows its colour and names it in text, for the eye and the screen reader alike.
void addFocusTypeVc::setColor(const QColor& color)
{
    m_color = color;
    const QString code = u'#' + focus::getColorString(color);
    style::setText(colorWell, code);
    const QString ink = color.lightnessF() > 0.55 ? QStringLiteral("#1e242b") : QStringLiteral("#ffffff");
    colorWell->setStyleSheet(QStringLiteral("QPushButton#colorWell { background: %1; color: %2; "
                                            "min-width: 120px; }")
                                 .arg(color.name(), ink));
}

void addFocusTypeVc::controlTextDidChange()
{
    lblError->hide();
    btnAdd->setEnabled(!textFieldFocusType->text().isEmpty());
}

void addFocusTypeVc::colorWellClicked()
{
    if (const std::optional<QColor> chosen = chooseColor(m_color))
        setColor(*chosen);
    if (!textFieldFocusType->text().isEmpty())
        btnAdd->setEnabled(true);
}

void addFocusTypeVc::btnAddClicked()
{
    if (!btnAdd->isEnabled())
        return;
    const QString name = textFieldFocusType->text();
    if (!c.focusTypes.isFocusNameAvailable(name, isAdding ? -1 : selectedRow)) {
        style::setText(lblError, text("errorSameFocusType",
                                      QStringLiteral("Focus type with the same name already exist.")));
        lblError->show();
        return;
    }
    const QString color = focus::getColorString(m_color);
    int row = selectedRow;
    if (isAdding)
        row = c.focusTypes.addFocusType(name, color);
    else if (!c.focusTypes.editFocusType(selectedRow, name, color))
        return;
    lblError->hide();
    accept();
    Q_EMIT focusTypeSaved(row, isAdding);
}

} // namespace velmora
