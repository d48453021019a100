#pragma once

#include <QString>

class QFrame;
class QLabel;
class QPushButton;
class QWidget;

namespace velmora::style {

// A calm full-screen look, readable from a few steps away.
QString lockStyleSheet();
QLabel* title(QWidget* parent, const char* objectName);
QLabel* body(QWidget* parent, const char* objectName);
QPushButton* primaryButton(QWidget* parent, const char* objectName);
QPushButton* quietButton(QWidget* parent, const char* objectName);

// The centred card of an overlay (the quantity question, the password prompt):
// answers the card, whose layout takes the overlay's content.
QFrame* overlayCard(QWidget* overlay);

// Plays a named animation in the label, or shows nothing with reduced motion.
void showAnimation(QLabel* label, const QString& assetName, bool reducedMotion);
void stopAnimation(QLabel* label);
// True while the label's movie decodes frames.
bool isAnimating(const QLabel* label);

} // namespace velmora::style
