#include "uninstallVc.h"

#include "DebugLog.h"
#include "TextCatalogue.h"

#include <QPushButton>
#include <QTextStream>
#include <QVBoxLayout>

namespace velmora {

uninstallVc::uninstallVc(PreferencesContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(ctx)
{
    setObjectName(QStringLiteral("uninstallVc"));
    btUninstall = new QPushButton(this);
    auto* layout = new QVBoxLayout(this);
    layout->addStretch();
    layout->addWidget(btUninstall, 0, Qt::AlignCenter);
    layout->addStretch();
    btUninstall->setText(c.texts.text("common", "buttonUninstallText", QStringLiteral("Uninstall")));
    connect(btUninstall, &QPushButton::clicked, this, [this] { btnUninstallClicked(); });

    ask = [this](const QString& text, const QString& yes, const QString& no) {
        return askModally(this, text, yes, no);
    };
    inform = [this](const QString& title, const QString& text) {
        informModally(this, title, text, c.texts.buttonOkText);
    };
}

void uninstallVc::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    btUninstall->setText(c.texts.text("common", "buttonUninstallText", QStringLiteral("Uninstall")));
}

void uninstallVc::btnUninstallClicked()
{
    const TextCatalogue& t = c.texts;
    if (!ask(t.text("common", "uninstallConfirmText",
                    QStringLiteral("Are you sure you want to giveup all your habits and uninstall Velmora?")),
             t.text("common", "yesText", QStringLiteral("Yes")),
             t.text("common", "noText", QStringLiteral("No"))))
        return;
    QTextStream(stdout) << "okclicked\n";
    inform(t.text("common", "uninstallDoneText",
                  QStringLiteral("All the app related processes will abort and the app will close itself and "
                                 "then you can drag the app and move to trash/bin.")),
           QString());
    QTextStream(stdout) << "okclicked\n";
    c.log.addLog(QStringLiteral("App uninstall clicked by user"));
    if (uninstall)
        uninstall();
}

} // namespace velmora
