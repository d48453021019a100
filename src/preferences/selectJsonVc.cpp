#include "selectJsonVc.h"

#include "DebugLog.h"
#include "PreferenceKeys.h"
#include "Preferences.h"
#include "SettingsLoader.h"
#include "SettingsValidation.h"
#include "TextCatalogue.h"
#include "WebPage.h"
#include "Workspace.h"

#include <QDebug>
#include <QDesktopServices>
#include <QFile>
#include <QFontDatabase>
#include <QFrame>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTextBlock>
#include <QVBoxLayout>

namespace velmora {

namespace {
constexpr QSize kChoiceBox{500, 350};
constexpr QSize kFaceBox{1000, 600};
constexpr char kEditSettingsLink[] = "velmora:edit-settings";

std::optional<QJsonObject> readJsonObject(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument doc = QJsonDocument::fromJson(file.readAll());
    return doc.isObject() ? std::optional<QJsonObject>(doc.object()) : std::nullopt;
}

// The text view's typing may turn quotation marks into typographic ones, which
// JSON does not know.
QString plainQuotes(QString text)
{
    text.replace(QChar(0x201D), u'"');
    text.replace(QChar(0x201C), u'"');
    return text;
}
} // namespace

// --- the page's messages ------------------------------------------------------------

void MessageHandler::postMessage(const QString& name, const QVariant& body)
{
    if (name != QLatin1String("setting_saved"))
        return;
    const QString text = body.typeId() == QMetaType::QString ? body.toString() : QString();
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8(), &error);
    // An unreadable body goes on as an empty document, which the schema refuses.
    const QJsonObject document = error.error == QJsonParseError::NoError ? doc.object() : QJsonObject();
    if (settingSaved)
        settingSaved(document);
}

void MessageHandler::pageReady()
{
    if (ready)
        ready();
}

// --- the editor ---------------------------------------------------------------------

selectJsonVc::selectJsonVc(SettingsEditorContext ctx, QWidget* parent)
    : QWidget(parent)
    , c(std::move(ctx))
{
    setObjectName(QStringLiteral("selectJsonVc"));
    messageHandler = new MessageHandler(this);
    if (QFile schema(c.packagedSchemaPath); schema.open(QIODevice::ReadOnly))
        messageHandler->schemaText = QString::fromUtf8(schema.readAll());
    messageHandler->settingSaved = [this](const QJsonObject& document) { jsonReceivedFromWebView(document); };
    messageHandler->ready = [this] { viewDidAppear(); };
    inform = [this](const QString& message, const QString& details) {
        informModally(window(), message, details, text("buttonOkText", c.texts.buttonOkText));
    };
    buildBox();
    resetBox();
}

void selectJsonVc::buildBox()
{
    box = new QFrame(this);
    box->setObjectName(QStringLiteral("box"));
    auto* outer = new QVBoxLayout(this);
    outer->addWidget(box, 0, Qt::AlignCenter);

    lblDescription = new QLabel(box);
    lblDescription->setWordWrap(true);
    lblDescription->setTextFormat(Qt::PlainText);
    lblDescription->setAlignment(Qt::AlignCenter);
    btnEditSettings = new QPushButton(box);
    btnAdvanced = new QPushButton(box);

    customView = new QWidget(box);
    customView->setObjectName(QStringLiteral("customView"));
    new QVBoxLayout(customView);
    customView->layout()->setContentsMargins(0, 0, 0, 0);

    textscrollView = new QWidget(box);
    lblTitle = new QLabel(textscrollView);
    lblTitle->setTextFormat(Qt::PlainText);
    textViewJson = new QPlainTextEdit(textscrollView);
    textViewJson->setObjectName(QStringLiteral("textViewJson"));
    textViewJson->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    textViewJson->setLineWrapMode(QPlainTextEdit::NoWrap);
    textViewJson->setTabChangesFocus(true);
    lblTitle->setBuddy(textViewJson);
    lblParseError = new QLabel(textscrollView);
    lblParseError->setObjectName(QStringLiteral("lblParseError"));
    lblParseError->setTextFormat(Qt::PlainText);
    lblParseError->setStyleSheet(QStringLiteral("color: #b00020;"));
    lblParseError->setWordWrap(true);
    lblVisitUrl = new QLabel(textscrollView);
    lblVisitUrl->setTextFormat(Qt::RichText);
    connect(lblVisitUrl, &QLabel::linkActivated, this, [this](const QString& link) {
        if (link == QLatin1String(kEditSettingsLink))
            btnEditSettingsClicked();
        else
            QDesktopServices::openUrl(QUrl(link));
    });
    lblVisitUrl->setTextInteractionFlags(Qt::TextBrowserInteraction);
    lblVisitUrl->setWordWrap(true);
    btnSave = new QPushButton(textscrollView);
    btnSave->setObjectName(QStringLiteral("btnSave"));
    loader = new QProgressBar(textscrollView);
    loader->setRange(0, 0);
    loader->setTextVisible(false);
    loader->setMaximumWidth(120);
    loader->setAccessibleName(QStringLiteral("Checking the settings"));
    btnCancel = new QPushButton(box);
    btnCancel->setObjectName(QStringLiteral("btnCancel"));

    auto* textLayout = new QVBoxLayout(textscrollView);
    textLayout->setContentsMargins(0, 0, 0, 0);
    textLayout->addWidget(lblTitle);
    textLayout->addWidget(textViewJson, 1);
    textLayout->addWidget(lblParseError);
    textLayout->addWidget(lblVisitUrl);
    auto* saveRow = new QHBoxLayout;
    saveRow->addStretch(1);
    saveRow->addWidget(loader);
    saveRow->addWidget(btnSave);
    textLayout->addLayout(saveRow);

    auto* choices = new QHBoxLayout;
    choices->addStretch(1);
    choices->addWidget(btnEditSettings);
    choices->addWidget(btnAdvanced);
    choices->addStretch(1);
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(lblDescription, 1);
    layout->addLayout(choices);
    layout->addWidget(customView, 1);
    layout->addWidget(textscrollView, 1);
    auto* back = new QHBoxLayout;
    back->addWidget(btnCancel);
    back->addStretch(1);
    layout->addLayout(back);

    connect(btnEditSettings, &QPushButton::clicked, this, [this] { btnEditSettingsClicked(); });
    connect(btnAdvanced, &QPushButton::clicked, this, [this] { btnAdvancedClicked(); });
    connect(btnSave, &QPushButton::clicked, this, [this] { btnSaveClicked(); });
    connect(btnCancel, &QPushButton::clicked, this, [this] { resetBox(); });
    connect(textViewJson, &QPlainTextEdit::textChanged, this, [this] { textDidChange(); });
}

QString selectJsonVc::text(const char* key, const QString& fallback) const
{
    return c.texts.text("settings", key, fallback);
}

// Where the user generates settings: a page of a web site when the catalogue names
// one, else the packaged editor behind "Edit Settings".
QString selectJsonVc::generatorPage() const
{
    const QString page = text("settingUrl", QString()).trimmed();
    const QUrl url(page);
    if (url.isValid() && (url.scheme() == u"https" || url.scheme() == u"http"))
        return page;
    return QStringLiteral("“%1”").arg(text("buttonEditSettingsText", QStringLiteral("Edit Settings")));
}

QString selectJsonVc::notValidText() const
{
    return text("settingIsNotValidText",
                QStringLiteral(
                    "Sorry it seems like your settings aren’t valid. Please generate settings at ")) +
           generatorPage();
}

void selectJsonVc::setTexts()
{
    lblTitle->setText(text("title", QStringLiteral("Enter settings JSON below:")));
    textViewJson->setAccessibleName(lblTitle->text());
    btnSave->setText(text("buttonSaveText", QStringLiteral("Save")));
    btnEditSettings->setText(text("buttonEditSettingsText", QStringLiteral("Edit Settings")));
    btnAdvanced->setText(text("buttonAdvancedText", QStringLiteral("Advanced")));
    btnCancel->setText(c.texts.buttonCancelText);
    lblDescription->setText(text(
        "description", QStringLiteral("Click on \"Edit Settings\" to modify your existing settings.\nIf you "
                                      "are an advanced user click on \"Advanced\" to view or edit settings "
                                      "JSON")));
    const QString page = generatorPage();
    const QString visit =
        text("visitText", QStringLiteral("Generate your settings at <SETTINGURL> and paste them here."));
    const QString target = page.startsWith(u"http") ? page : QString::fromLatin1(kEditSettingsLink);
    const QString link =
        QStringLiteral("<a href=\"%1\">%2</a>").arg(target.toHtmlEscaped(), page.toHtmlEscaped());
    lblVisitUrl->setText(visit.toHtmlEscaped().replace(QLatin1String("&lt;SETTINGURL&gt;"), link));
    lblVisitUrl->setAccessibleName(fillTemplate(visit, {{"<SETTINGURL>", page}}));
}

QByteArray selectJsonVc::storedDocument() const
{
    return settingsDocumentText(c.preferences, c.packagedSettingsPath);
}

void selectJsonVc::setData()
{
    setTexts();
    textViewJson->setPlainText(QString::fromUtf8(storedDocument()));
    lblParseError->clear();
}

void selectJsonVc::textDidChange()
{
    btnSave->setEnabled(!textViewJson->toPlainText().isEmpty() && !isGettingSchema);
}

// One arrangement for the choice and one for each face.
void selectJsonVc::showFace(bool isEditSettings, bool isAdvanced)
{
    const bool chosen = isEditSettings || isAdvanced;
    lblDescription->setVisible(!chosen);
    btnEditSettings->setVisible(!chosen);
    btnAdvanced->setVisible(!chosen);
    btnCancel->setVisible(chosen);
    customView->setVisible(isEditSettings);
    textscrollView->setVisible(isAdvanced);
    const QSize size = chosen ? kFaceBox : kChoiceBox;
    box->setMinimumSize(size);
    box->setMaximumSize(chosen ? QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX) : size);
    if (QWidget* w = window(); w != this && w->isVisible())
        w->resize(w->size().expandedTo(w->minimumSizeHint()));
}

void selectJsonVc::resetBox()
{
    showFace(false, false);
    loader->hide();
    lblParseError->clear();
}

void selectJsonVc::btnEditSettingsClicked()
{
    showFace(true, false);
    showWebPage();
}

void selectJsonVc::btnAdvancedClicked()
{
    setData();
    showFace(false, true);
    textViewJson->setFocus();
}

// The page is made on first need: the web engine is loaded only for a user who
// opens it.
void selectJsonVc::showWebPage()
{
    if (!webview) {
        webview = webpage::createWithChannel(customView, messageHandler);
        if (!webview) {
            auto* unavailable = new QLabel(
                QStringLiteral("The settings page cannot be shown on this computer. Use “Advanced” to edit "
                               "the settings as text."),
                customView);
            unavailable->setWordWrap(true);
            unavailable->setAlignment(Qt::AlignCenter);
            customView->layout()->addWidget(unavailable);
            c.log.addLog(QStringLiteral("settings page unavailable"));
            return;
        }
        webview->setAccessibleName(QStringLiteral("Settings editor"));
        customView->layout()->addWidget(webview);
        webview->setFocus(); // the keyboard goes to the page, not to a hidden choice
        webpage::load(webview, c.generatorPage);
        c.log.addLog(QStringLiteral("Showing settings page"));
        return; // the page says when it is ready
    }
    webview->setFocus();
    viewDidAppear();
}

// Feeds the page the stored document and the installed applications.
void selectJsonVc::viewDidAppear()
{
    if (!webview)
        return;
    const QByteArray document = storedDocument();
    QJsonParseError error;
    QJsonDocument::fromJson(document, &error);
    // A stored text that is no JSON would break the script; the page gets it as text
    // and says that it cannot read it.
    const QString argument =
        error.error == QJsonParseError::NoError
            ? QString::fromUtf8(document)
            : QString::fromUtf8(
                  QJsonDocument(QJsonArray{QString::fromUtf8(document)}).toJson(QJsonDocument::Compact))
                  .mid(1)
                  .chopped(1);
    webpage::runJavaScript(webview,
                           QStringLiteral("loadSettingsDataFromMac(") + argument + QStringLiteral(");"));

    QJsonArray names;
    QJsonObject labels;
    if (c.workspace) {
        for (const Application& app : c.workspace->installedApplications()) {
            names.append(app.name);
            labels.insert(app.name, app.displayName.isEmpty() ? app.name : app.displayName);
        }
    }
    const QJsonObject apps{{QStringLiteral("installedApps"), names},
                           {QStringLiteral("displayNames"), labels}};
    webpage::runJavaScript(webview,
                           QStringLiteral("LoadInstalledApps(") +
                               QString::fromUtf8(QJsonDocument(apps).toJson(QJsonDocument::Compact)) +
                               QStringLiteral(");"));
    c.log.addLog(QStringLiteral("Settings sent to the settings page"));
}

// --- the schema -------------------------------------------------------------------------

void selectJsonVc::getSchemsFile(SchemaCallback done)
{
    const QUrl& server = c.configServer;
    if (!server.isValid() || server.isEmpty() || server.scheme().isEmpty()) {
        done(readJsonObject(c.packagedSchemaPath));
        return;
    }
    velmora::getSchemsFile(c.http, server, c.log, this, std::move(done));
}

void selectJsonVc::schemaFetchStarted()
{
    isGettingSchema = true;
    btnSave->setEnabled(false);
    loader->show();
}

void selectJsonVc::schemaFetchEnded()
{
    isGettingSchema = false;
    loader->hide();
    textDidChange();
}

bool selectJsonVc::validated(const std::optional<QJsonObject>& schema, const QJsonObject& document)
{
    if (!schema) {
        inform(text("schemaError", QStringLiteral("Your settings can not be validated.")), QString());
        return false;
    }
    const SettingsValidation result = validateSettings(document, *schema);
    if (!result.schemaProblem.isEmpty()) {
        c.log.addLog(result.schemaProblem);
        inform(text("schemaError", QStringLiteral("Your settings can not be validated.")),
               result.schemaProblem);
        return false;
    }
    if (!result.isValid()) {
        inform(notValidText(), result.describe());
        return false;
    }
    return true;
}

void selectJsonVc::btnSaveClicked()
{
    if (isGettingSchema)
        return;
    schemaFetchStarted();
    getSchemsFile([this](std::optional<QJsonObject> schema) {
        schemaFetchEnded();
        if (!schema) {
            validated(schema, {});
            return;
        }
        const QString typed = textViewJson->toPlainText();
        const QString plain = plainQuotes(typed);
        if (plain != typed)
            textViewJson->setPlainText(plain);
        QJsonParseError error;
        const QJsonDocument doc = QJsonDocument::fromJson(plain.toUtf8(), &error);
        if (error.error != QJsonParseError::NoError) {
            qDebug().noquote() << "settings JSON:" << error.errorString();
            const int offset = int(QString::fromUtf8(plain.toUtf8().left(error.offset)).size());
            QTextCursor cursor(textViewJson->document());
            cursor.setPosition(qMin(offset, int(plain.size())));
            textViewJson->setTextCursor(cursor);
            lblParseError->setText(QStringLiteral("Line %1, column %2: %3")
                                       .arg(cursor.blockNumber() + 1)
                                       .arg(cursor.positionInBlock() + 1)
                                       .arg(error.errorString()));
            return;
        }
        lblParseError->clear();
        if (!validated(schema, doc.isObject() ? doc.object() : QJsonObject()))
            return;
        c.preferences.setValue(keys::kUserdefaultsSelectedJson, plain);
        c.log.addLog(QStringLiteral("Settings saved"));
        quitAndRestartApp();
    });
}

void selectJsonVc::jsonReceivedFromWebView(const QJsonObject& jsonResult)
{
    if (isGettingSchema) {
        c.log.addLog(QStringLiteral("settings from the page ignored: a check is already running"));
        return;
    }
    schemaFetchStarted();
    getSchemsFile([this, jsonResult](std::optional<QJsonObject> schema) {
        schemaFetchEnded();
        if (!validated(schema, jsonResult))
            return;
        inform(text("settingIsValidText",
                    QStringLiteral("Your settings have been validated and will be applied now.")),
               QString());
        const QByteArray pretty = QJsonDocument(jsonResult).toJson(QJsonDocument::Indented);
        c.preferences.setValue(keys::kUserdefaultsSelectedJson, QString::fromUtf8(pretty));
        c.log.addLog(QStringLiteral("Settings saved"));
        quitAndRestartApp();
    });
}

} // namespace velmora
