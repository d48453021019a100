#pragma once

#include "PreferencesContext.h"

#include <functional>
#include <optional>
#include <QJsonObject>
#include <QObject>
#include <QUrl>
#include <QVariant>
#include <QWidget>

class QFrame;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace velmora {

class DebugLog;
class Http;
class Preferences;
class TextCatalogue;
class Workspace;

// What the settings editor reaches beyond its own window.
struct SettingsEditorContext
{
    Preferences& preferences;
    const DebugLog& log;
    const TextCatalogue& texts;
    Http& http;
    Workspace* workspace = nullptr; // the installed applications offered by the page
    QUrl configServer;              // empty: the packaged schema is used
    QString packagedSettingsPath;
    QString packagedSchemaPath;
    QUrl generatorPage;
};

// The page's end of the web channel, published to it as "bridge". The page calls
// postMessage("setting_saved", document) and pageReady() once it can be fed.
class MessageHandler : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString schema READ schema CONSTANT)
public:
    using QObject::QObject;

    Q_INVOKABLE void postMessage(const QString& name, const QVariant& body);
    Q_INVOKABLE void pageReady();

    // The packaged schema, for the page's own hints next to each field.
    QString schema() const { return schemaText; }

    QString schemaText;
    std::function<void(const QJsonObject&)> settingSaved;
    std::function<void()> ready;
};

// The settings tab of the preferences window: the settings document edited either
// on the program's own generator page or as JSON text, checked against the schema
// before it is stored. Storing restarts the program.
class selectJsonVc : public QWidget
{
    Q_OBJECT
public:
    explicit selectJsonVc(SettingsEditorContext ctx, QWidget* parent = nullptr);

    // Called when the tab is selected: texts, the stored document in the text view,
    // and the choice between the two faces.
    void setData();
    void btnEditSettingsClicked();
    void btnAdvancedClicked();
    void btnSaveClicked();
    void jsonReceivedFromWebView(const QJsonObject& jsonResult);
    // Back to the small box with the two choices, as the window is closed.
    void resetBox();

    bool isGettingSchema = false;
    std::function<void()> quitAndRestartApp;
    // An alert with one button: message and informative text. Tests replace it.
    InformAlert inform;

    QFrame* box = nullptr;
    QLabel* lblDescription = nullptr;
    QPushButton* btnEditSettings = nullptr;
    QPushButton* btnAdvanced = nullptr;
    QWidget* customView = nullptr;
    QWidget* webview = nullptr; // the generator page; null until first shown, or when no engine
    QLabel* lblTitle = nullptr;
    QPlainTextEdit* textViewJson = nullptr;
    QWidget* textscrollView = nullptr;
    QLabel* lblParseError = nullptr;
    QLabel* lblVisitUrl = nullptr;
    QPushButton* btnSave = nullptr;
    QPushButton* btnCancel = nullptr;
    QProgressBar* loader = nullptr;
    MessageHandler* messageHandler = nullptr;

private:
    using SchemaCallback = std::function<void(std::optional<QJsonObject>)>;

    void buildBox();
    void setTexts();
    void showFace(bool isEditSettings, bool isAdvanced);
    void showWebPage();
    void viewDidAppear();
    void textDidChange();
    void getSchemsFile(SchemaCallback done);
    void schemaFetchStarted();
    void schemaFetchEnded();
    // The schema could be had and checked: otherwise the alert has been shown.
    bool validated(const std::optional<QJsonObject>& schema, const QJsonObject& document);
    QByteArray storedDocument() const;
    QString text(const char* key, const QString& fallback) const;
    QString notValidText() const;
    QString generatorPage() const;

    SettingsEditorContext c;
};

} // namespace velmora
