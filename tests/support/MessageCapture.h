#pragma once

#include <QStringList>
#include <QtGlobal>

namespace velmora::test {

// Collects what the program writes through Qt's message log (qDebug and kin)
// while it lives, so that a test can tell what would reach the journal.
class MessageCapture
{
public:
    MessageCapture() { s_current = this, m_previous = qInstallMessageHandler(&collect); }
    ~MessageCapture() { qInstallMessageHandler(m_previous), s_current = nullptr; }
    QString all() const { return lines.join(u'\n'); }
    QStringList lines;

private:
    static void collect(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        s_current->lines << text;
    }
    static inline MessageCapture* s_current = nullptr;
    QtMessageHandler m_previous;
};

} // namespace velmora::test
