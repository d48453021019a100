#include "Style.h"

#include <QAbstractButton>
#include <QEvent>
#include <QFile>
#include <QFrame>
#include <QLabel>
#include <QMovie>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace velmora::style {

QString lockStyleSheet(qreal scale)
{
    QString sheet = QStringLiteral(R"(
        QWidget#mainWindow, QWidget#ViewController { background: #1e242b; }
        QWidget { color: #e6ebf0; font-size: 20px; }
        QLabel[role="title"] { font-size: 34px; font-weight: 600; }
        QLabel[role="clock"] { font-size: 96px; font-weight: 300; }
        QLabel[role="body"] { font-size: 22px; color: #c9d2dc; }
        QPushButton[role="primary"] {
            background: #3d8b6e; color: white; border: none; border-radius: 12px;
            padding: 16px 36px; font-size: 24px; font-weight: 600; }
        QPushButton[role="primary"]:hover { background: #46a07f; }
        QPushButton[role="primary"]:disabled { background: #4a545e; color: #9aa5b0; }
        QPushButton[role="quiet"] {
            background: transparent; color: #9aa5b0; border: 1px solid #4a545e; border-radius: 8px;
            padding: 8px 18px; font-size: 16px; }
        QListWidget { background: transparent; border: none; font-size: 24px; }
        QLineEdit { background: #2a323b; border: 1px solid #4a545e; border-radius: 8px; padding: 10px;
            font-size: 32px; min-width: 160px; }
        QComboBox { background: #2a323b; border: 1px solid #4a545e; border-radius: 8px; padding: 8px;
            font-size: 22px; min-width: 320px; }
        QComboBox { combobox-popup: 0; }
        QComboBox QAbstractItemView { background: #2a323b; border: 1px solid #4a545e;
            selection-background-color: #33594b; selection-color: white; }
        QFrame#overlay { background: #262d35; border-radius: 16px; }
        QFrame#logQuantityVc { background: rgba(20, 25, 31, 215); }
        QTableWidget { background: #262d35; border: 1px solid #4a545e; border-radius: 8px;
            gridline-color: #4a545e; font-size: 18px; }
        QHeaderView::section { background: #2a323b; color: #9aa5b0; border: none;
            border-bottom: 1px solid #4a545e; padding: 6px; font-size: 16px; }
        QTableCornerButton::section { background: #2a323b; border: none; }
        QPlainTextEdit { background: #2a323b; border: 1px solid #4a545e; border-radius: 8px; padding: 8px; }
    )");
    if (qFuzzyCompare(scale, 1.0))
        return sheet;
    // Sizes shrink with the screen; hairlines stay.
    static const QRegularExpression pixels(QStringLiteral("\\b(\\d+)px"));
    QString scaled;
    qsizetype from = 0;
    for (auto it = pixels.globalMatch(sheet); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        const int size = m.captured(1).toInt();
        scaled += sheet.mid(from, m.capturedStart() - from) +
                  QString::number(size <= 2 ? size : qMax(1, qRound(size * scale))) + QStringLiteral("px");
        from = m.capturedEnd();
    }
    return scaled + sheet.mid(from);
}

qreal lockScale(const QSize& window)
{
    const qreal scale = qMin(qMin(window.width() / 1280.0, window.height() / 860.0), 1.0);
    return qMax(0.5, qRound(scale * 20) / 20.0); // in steps, so that a resize rarely restyles
}

QString dialogStyleSheet()
{
    return QStringLiteral(R"(
        QWidget { background: #1e242b; color: #e6ebf0; font-size: 14px; }
        QLabel { background: transparent; }
        QLabel[role="title"] { font-size: 20px; font-weight: 600; }
        QLabel[role="body"] { font-size: 15px; color: #c9d2dc; }
        QPushButton { background: #2a323b; border: 1px solid #4a545e; border-radius: 6px; padding: 6px 14px; }
        QPushButton:focus, QLineEdit:focus, QListWidget:focus, QCheckBox:focus, QRadioButton:focus,
        QComboBox:focus {
            border: 1px solid #7fb8a2; }
        QPushButton[role="primary"] { background: #3d8b6e; color: white; border: 1px solid #3d8b6e;
            font-weight: 600; }
        QPushButton[role="primary"]:hover { background: #46a07f; }
        QPushButton[role="primary"]:focus { border: 1px solid #e6ebf0; }
        QPushButton:disabled { background: #2a323b; color: #6c7784; border: 1px solid #3a424b; }
        QPushButton[role="quiet"] { background: transparent; color: #c9d2dc; }
        QLineEdit, QComboBox { background: #2a323b; border: 1px solid #4a545e; border-radius: 6px;
            padding: 5px; }
        QComboBox { combobox-popup: 0; }
        QComboBox QAbstractItemView { background: #2a323b; border: 1px solid #4a545e;
            selection-background-color: #33594b; selection-color: white; }
        QListWidget, QTableWidget { background: #262d35; border: 1px solid #4a545e; border-radius: 6px;
            alternate-background-color: #2a323b; }
        QListWidget::item:selected, QTableWidget::item:selected { background: #33594b; color: white; }
        QCheckBox, QRadioButton { background: transparent; border: 1px solid transparent; padding: 2px; }
        QCheckBox::indicator, QRadioButton::indicator { width: 14px; height: 14px;
            border: 1px solid #7f8a96; background: #2a323b; }
        QCheckBox::indicator { border-radius: 3px; }
        QRadioButton::indicator { border-radius: 8px; }
        QCheckBox::indicator:checked, QRadioButton::indicator:checked { background: #3d8b6e;
            border: 1px solid #7fb8a2; }
        QCheckBox::indicator:disabled, QRadioButton::indicator:disabled { border: 1px solid #3a424b; }
    )");
}

static QLabel* label(QWidget* parent, const char* objectName, const char* role)
{
    auto* l = new QLabel(parent);
    l->setObjectName(QLatin1String(objectName));
    l->setProperty("role", QLatin1String(role));
    l->setAlignment(Qt::AlignCenter);
    l->setWordWrap(true);
    l->setTextFormat(Qt::PlainText);
    return l;
}

QLabel* title(QWidget* parent, const char* objectName)
{
    return label(parent, objectName, "title");
}

QLabel* body(QWidget* parent, const char* objectName)
{
    return label(parent, objectName, "body");
}

static QPushButton* button(QWidget* parent, const char* objectName, const char* role)
{
    auto* b = new QPushButton(parent);
    b->setObjectName(QLatin1String(objectName));
    b->setProperty("role", QLatin1String(role));
    b->setCursor(Qt::PointingHandCursor);
    b->setAutoDefault(false);
    return b;
}

QPushButton* primaryButton(QWidget* parent, const char* objectName)
{
    return button(parent, objectName, "primary");
}

QPushButton* quietButton(QWidget* parent, const char* objectName)
{
    return button(parent, objectName, "quiet");
}

void setText(QLabel* label, const QString& text)
{
    label->setText(text);
    label->setAccessibleName(text);
}

void setText(QAbstractButton* button, const QString& text)
{
    button->setText(text);
    button->setAccessibleName(text);
}

QFrame* overlayCard(QWidget* overlay)
{
    auto* outer = new QVBoxLayout(overlay);
    auto* card = new QFrame(overlay);
    card->setObjectName(QStringLiteral("overlay"));
    card->setMaximumWidth(760);
    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(40, 32, 40, 32);
    layout->setSpacing(18);
    outer->addStretch();
    outer->addWidget(card, 0, Qt::AlignHCenter);
    outer->addStretch();
    return card;
}

// Asset names as the routine knows them ("Smile _Small") map to file names by
// one rule: lower case, every run of other characters a single "-".
static QString assetPath(const QString& assetName)
{
    static const QRegularExpression others(QStringLiteral("[^a-z0-9]+"));
    QString file = assetName.toLower().replace(others, QStringLiteral("-"));
    while (file.startsWith(u'-'))
        file.remove(0, 1);
    while (file.endsWith(u'-'))
        file.chop(1);
    for (const char* extension : {".gif", ".png"}) {
        const QString candidate = QStringLiteral(":/images/") + file + QLatin1String(extension);
        if (QFile::exists(candidate))
            return candidate;
    }
    return {};
}

namespace {
// Lives as long as its movie; a label's Show and Hide events arrive whenever an
// ancestor (a screen of a stack, the lock window) is shown or hidden.
class PlayWhileShown : public QObject
{
public:
    explicit PlayWhileShown(QMovie* movie)
        : QObject(movie)
        , m_movie(movie)
    {
    }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            m_movie->start();
        else if (event->type() == QEvent::Hide)
            m_movie->stop();
        return false;
    }

private:
    QMovie* m_movie;
};
} // namespace

void stopAnimation(QLabel* label)
{
    if (QMovie* movie = label->movie()) {
        label->setMovie(nullptr);
        movie->stop();
        movie->deleteLater();
    }
    label->clear();
}

void showAnimation(QLabel* label, const QString& assetName, bool reducedMotion)
{
    stopAnimation(label);
    if (reducedMotion)
        return;
    const QString path = assetPath(assetName);
    if (path.isEmpty())
        return;
    if (path.endsWith(QLatin1String(".png"))) {
        label->setPixmap(QPixmap(path));
        return;
    }
    auto* movie = new QMovie(path, QByteArray(), label);
    label->setMovie(movie);
    // Decoding frames costs CPU all day long: the movie plays only while its
    // label is on screen, whichever ancestor hides or shows it.
    label->installEventFilter(new PlayWhileShown(movie));
    if (label->isVisible())
        movie->start();
}

bool isAnimating(const QLabel* label)
{
    return label->movie() && label->movie()->state() == QMovie::Running;
}

} // namespace velmora::style
