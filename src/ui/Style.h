#pragma once

#include <QSize>
#include <QString>

class QAbstractButton;
class QFrame;
class QLabel;
class QPushButton;
class QWidget;

// The calm look shared by every screen of the program: the lock windows, the
// overlays on them and the smaller windows and dialogs. Controls carry an
// object name (what tests and the style sheet key on) and a "role" property
// (what the style sheet styles); texts are set later, when a screen is shown.
namespace velmora::style {

// The style sheet of a full-screen lock window, readable from a few steps away.
// SCALE shrinks every size for a small screen.
QString lockStyleSheet(qreal scale = 1.0);
// The scale of the lock's sizes for a window of this size: whole from 1280×860 up.
qreal lockScale(const QSize& window);
// The same colours at the size of a window or dialog on the desktop.
QString dialogStyleSheet();

// Centred, word-wrapped plain-text labels.
QLabel* title(QWidget* parent, const char* objectName);
QLabel* body(QWidget* parent, const char* objectName);
// The screen's main action and its quieter alternatives. Neither becomes the
// default button by itself; a dialog names its own with setDefault().
QPushButton* primaryButton(QWidget* parent, const char* objectName);
QPushButton* quietButton(QWidget* parent, const char* objectName);

// Sets what a control shows and what a screen reader reads, which are the same.
void setText(QLabel* label, const QString& text);
void setText(QAbstractButton* button, const QString& text);

// The centred card of an overlay (the quantity question, the password prompt):
// answers the card, whose layout takes the overlay's content.
QFrame* overlayCard(QWidget* overlay);

// Plays a named animation in the label, or shows nothing with reduced motion.
void showAnimation(QLabel* label, const QString& assetName, bool reducedMotion);
void stopAnimation(QLabel* label);
// True while the label's movie decodes frames.
bool isAnimating(const QLabel* label);

} // namespace velmora::style
