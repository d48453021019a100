#include "GnomePorts.h"

#include "GnomeShellBus.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDesktopServices>
#include <QFileInfo>
#include <QSet>
#include <QUrl>
#include <QWidget>

namespace velmora {

GnomeLockShield::GnomeLockShield(GnomeShellBus& bus)
    : m_bus(bus)
{
    m_returned = QObject::connect(&m_bus, &GnomeShellBus::extensionReturned, &m_bus, [this] { tellAgain(); });
}

GnomeLockShield::~GnomeLockShield()
{
    QObject::disconnect(m_returned);
}

void GnomeLockShield::prepare(QWidget* window, Surface surface)
{
    // The shell knows a window by its title; ours are told apart by it.
    static const char* const names[] = {"Lock", "Blank", "AboveLock"};
    m_prepared.insert(window->windowTitle(), surface);
    m_bus.send(QStringLiteral("Prepare"), {window->windowTitle(), QLatin1String(names[int(surface)])});
}

void GnomeLockShield::setLockUp(bool up)
{
    m_up = up;
    m_bus.send(QStringLiteral("SetLockUp"), {up});
}

void GnomeLockShield::setHoldsKeyboard(bool held)
{
    m_held = held;
    m_bus.send(QStringLiteral("SetHoldsKeyboard"), {held});
}

// A reloaded extension (the shell's own lock screen turns extensions off and on)
// starts empty: a lock that is up goes up again there.
void GnomeLockShield::tellAgain()
{
    m_bus.log(QStringLiteral("GNOME Shell extension returned; the lock is %1").arg(m_up ? "up" : "down"));
    static const char* const names[] = {"Lock", "Blank", "AboveLock"};
    for (auto it = m_prepared.cbegin(); it != m_prepared.cend(); ++it)
        m_bus.send(QStringLiteral("Prepare"), {it.key(), QLatin1String(names[int(it.value())])});
    if (m_up) {
        m_bus.send(QStringLiteral("SetLockUp"), {true});
        m_bus.send(QStringLiteral("SetHoldsKeyboard"), {m_held});
    }
}

GnomeWorkspace::GnomeWorkspace(GnomeShellBus& bus, QObject* parent)
    : Workspace(parent)
    , m_bus(bus)
{
    connect(&m_bus, &GnomeShellBus::frontWindowChanged, this, &GnomeWorkspace::frontWindowChanged);
}

static GnomeWorkspace::Facts factsFrom(const QVariant& answer)
{
    if (!answer.canConvert<QDBusArgument>())
        return {};
    return qdbus_cast<GnomeWorkspace::Facts>(answer);
}

Application GnomeWorkspace::applicationOf(const Facts& window)
{
    if (window.value(QStringLiteral("pid")).toLongLong() == QCoreApplication::applicationPid())
        return {};
    WindowFacts facts;
    facts.gtkApplicationId = window.value(QStringLiteral("gtkApplicationId"));
    if (facts.gtkApplicationId.isEmpty()) {
        // The shell's own match of the window to a desktop entry.
        QString id = window.value(QStringLiteral("desktopId"));
        if (id.endsWith(QLatin1String(".desktop")))
            id.chop(8);
        facts.gtkApplicationId = id;
    }
    facts.wmClass = window.value(QStringLiteral("wmClass"));
    facts.wmInstance = window.value(QStringLiteral("wmInstance"));
    const QString pid = window.value(QStringLiteral("pid"));
    bool isNumber = false;
    if (pid.toUInt(&isNumber) > 0 && isNumber)
        facts.executable = QFileInfo(QStringLiteral("/proc/%1/exe").arg(pid)).canonicalFilePath();
    if (facts.wmClass.isEmpty() && facts.wmInstance.isEmpty() && facts.gtkApplicationId.isEmpty() &&
        facts.executable.isEmpty())
        return {};
    return m_entries.applicationForWindow(facts);
}

void GnomeWorkspace::frontWindowChanged()
{
    const Application before = m_front;
    m_front = applicationOf(factsFrom(m_bus.ask(QStringLiteral("FrontWindow"))));
    m_frontKnown = true;
    if (m_front != before)
        Q_EMIT frontApplicationChanged();
}

Application GnomeWorkspace::frontmostApplication()
{
    if (!m_frontKnown) {
        m_front = applicationOf(factsFrom(m_bus.ask(QStringLiteral("FrontWindow"))));
        m_frontKnown = true;
    }
    return m_front;
}

QList<GnomeWorkspace::Facts> GnomeWorkspace::windows()
{
    const QVariant answer = m_bus.ask(QStringLiteral("Windows"));
    if (!answer.canConvert<QDBusArgument>())
        return {};
    return qdbus_cast<QList<Facts>>(answer);
}

void GnomeWorkspace::hide(const Application& application)
{
    if (!application.isValid())
        return;
    QStringList ids;
    for (const Facts& window : windows()) {
        if (applicationOf(window).name == application.name)
            ids << window.value(QStringLiteral("id"));
    }
    if (ids.isEmpty())
        return;
    const uint hidden = m_bus.ask(QStringLiteral("Minimize"), {ids}).toUInt();
    if (hidden < uint(ids.size()))
        m_bus.log(QStringLiteral("GNOME Shell hid %1 of %2 windows of %3")
                      .arg(hidden)
                      .arg(ids.size())
                      .arg(application.name));
}

QStringList GnomeWorkspace::runningApplications()
{
    QStringList names;
    for (const Facts& window : windows()) {
        const Application application = applicationOf(window);
        if (application.isValid() && !names.contains(application.name))
            names << application.name;
    }
    return names;
}

QList<Application> GnomeWorkspace::installedApplications()
{
    return m_entries.installed();
}

Application GnomeWorkspace::applicationFor(const QString& desktopFileOrName)
{
    return m_entries.applicationFor(desktopFileOrName);
}

bool GnomeWorkspace::launch(const Application& application)
{
    QString error;
    if (m_entries.launch(application, &error))
        return true;
    m_bus.log(QStringLiteral("Could not launch %1: %2").arg(application.name, error));
    return false;
}

bool GnomeWorkspace::openUrl(const QString& address)
{
    const QUrl url(address, QUrl::TolerantMode);
    if (url.isValid() && QDesktopServices::openUrl(url))
        return true;
    m_bus.log(QStringLiteral("Could not open %1").arg(address));
    return false;
}

GnomeHotKeys::GnomeHotKeys(GnomeShellBus& bus)
    : m_bus(bus)
{
    m_connections << QObject::connect(&m_bus, &GnomeShellBus::chordPressed, &m_bus,
                                      [this](const QString& accelerator) { chordPressed(accelerator); });
    // A reloaded extension has forgotten our chords.
    m_connections << QObject::connect(&m_bus, &GnomeShellBus::extensionReturned, &m_bus, [this] {
        QSet<QString> bound;
        for (const Chord& chord : std::as_const(m_chords)) {
            if (!bound.contains(chord.accelerator))
                m_bus.send(QStringLiteral("BindChord"), {chord.accelerator});
            bound.insert(chord.accelerator);
        }
    });
}

GnomeHotKeys::~GnomeHotKeys()
{
    for (const QMetaObject::Connection& connection : std::as_const(m_connections))
        QObject::disconnect(connection);
}

QString GnomeHotKeys::accelerator(int qtKey, Qt::KeyboardModifiers modifiers)
{
    static const QHash<int, QString> named = {
        {Qt::Key_Return, QStringLiteral("Return")},
        {Qt::Key_Enter, QStringLiteral("KP_Enter")},
        {Qt::Key_Tab, QStringLiteral("Tab")},
        {Qt::Key_Backtab, QStringLiteral("Tab")},
        {Qt::Key_Space, QStringLiteral("space")},
        {Qt::Key_Escape, QStringLiteral("Escape")},
        {Qt::Key_Backspace, QStringLiteral("BackSpace")},
        {Qt::Key_Delete, QStringLiteral("Delete")},
        {Qt::Key_Insert, QStringLiteral("Insert")},
        {Qt::Key_Home, QStringLiteral("Home")},
        {Qt::Key_End, QStringLiteral("End")},
        {Qt::Key_PageUp, QStringLiteral("Page_Up")},
        {Qt::Key_PageDown, QStringLiteral("Page_Down")},
        {Qt::Key_Left, QStringLiteral("Left")},
        {Qt::Key_Right, QStringLiteral("Right")},
        {Qt::Key_Up, QStringLiteral("Up")},
        {Qt::Key_Down, QStringLiteral("Down")},
        {Qt::Key_Minus, QStringLiteral("minus")},
        {Qt::Key_Equal, QStringLiteral("equal")},
        {Qt::Key_Comma, QStringLiteral("comma")},
        {Qt::Key_Period, QStringLiteral("period")},
        {Qt::Key_Slash, QStringLiteral("slash")},
        {Qt::Key_Semicolon, QStringLiteral("semicolon")},
        {Qt::Key_Apostrophe, QStringLiteral("apostrophe")},
        {Qt::Key_BracketLeft, QStringLiteral("bracketleft")},
        {Qt::Key_BracketRight, QStringLiteral("bracketright")},
        {Qt::Key_Backslash, QStringLiteral("backslash")},
        {Qt::Key_QuoteLeft, QStringLiteral("grave")},
    };
    QString key;
    const bool keypad = modifiers.testFlag(Qt::KeypadModifier);
    if (qtKey >= Qt::Key_A && qtKey <= Qt::Key_Z)
        key = QChar(u'a' + (qtKey - Qt::Key_A));
    else if (qtKey >= Qt::Key_0 && qtKey <= Qt::Key_9)
        key = (keypad ? QStringLiteral("KP_") : QString()) + QChar(u'0' + (qtKey - Qt::Key_0));
    else if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F35)
        key = QStringLiteral("F%1").arg(qtKey - Qt::Key_F1 + 1);
    else
        key = named.value(qtKey);
    if (key.isEmpty())
        return {};
    QString prefix;
    if (modifiers.testFlag(Qt::ControlModifier))
        prefix += QStringLiteral("<Control>");
    if (modifiers.testFlag(Qt::AltModifier))
        prefix += QStringLiteral("<Alt>");
    if (modifiers.testFlag(Qt::ShiftModifier) || qtKey == Qt::Key_Backtab)
        prefix += QStringLiteral("<Shift>");
    if (modifiers.testFlag(Qt::MetaModifier))
        prefix += QStringLiteral("<Super>");
    return prefix + key;
}

quint32 GnomeHotKeys::registerChord(int qtKey, Qt::KeyboardModifiers modifiers, Handler pressed,
                                    Handler released)
{
    const QString name = accelerator(qtKey, modifiers);
    if (name.isEmpty()) {
        m_bus.log(QStringLiteral("GNOME Shell has no name for the hot key %1").arg(qtKey));
        return 0;
    }
    bool shared = false;
    for (const Chord& chord : std::as_const(m_chords))
        shared = shared || chord.accelerator == name;
    if (!shared && !m_bus.ask(QStringLiteral("BindChord"), {name}).toBool()) {
        m_bus.log(QStringLiteral("GNOME Shell could not bind the hot key %1").arg(name));
        return 0;
    }
    const quint32 handle = m_nextHandle++;
    m_chords.insert(handle, Chord{name, std::move(pressed), std::move(released)});
    return handle;
}

void GnomeHotKeys::unregisterChord(quint32 handle)
{
    const auto found = m_chords.constFind(handle);
    if (found == m_chords.constEnd())
        return;
    const QString name = found->accelerator;
    m_chords.erase(found);
    for (const Chord& chord : std::as_const(m_chords)) {
        if (chord.accelerator == name)
            return;
    }
    m_bus.send(QStringLiteral("UnbindChord"), {name});
}

void GnomeHotKeys::chordPressed(const QString& accelerator)
{
    // The shell reports presses only; a chord's release follows at once.
    QList<Chord> fired;
    for (const Chord& chord : std::as_const(m_chords)) {
        if (chord.accelerator == accelerator)
            fired << chord;
    }
    for (const Chord& chord : std::as_const(fired)) {
        if (chord.pressed)
            chord.pressed();
        if (chord.released)
            chord.released();
    }
}

} // namespace velmora
