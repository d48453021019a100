#pragma once

#include <functional>

class QWindow;

namespace velmora::wayland {

// The key the program's own shell integration is loaded by
// (QT_WAYLAND_SHELL_INTEGRATION). It gives the windows marked below a layer
// surface in the overlay layer, makes their menus, lists and tooltips popups of
// those surfaces, and hands every other window to Qt's xdg-shell.
inline constexpr char kShellIntegrationKey[] = "velmora-shell";

// The dynamic property of a QWindow that asks for a layer surface; read when the
// window's surface is made, that is each time the window is shown.
inline constexpr char kLayerRoleProperty[] = "_velmora_layer_role";
enum class LayerRole
{
    None = 0,
    Lock = 1,      // covers its output, takes the keyboard
    Blank = 2,     // covers its output, never takes the keyboard
    AboveLock = 3, // centred on its output above the lock, takes the keyboard
};

// True when the integration is in use and the compositor offers the layer shell.
bool layerShellOffered();
// True when the compositor also lets a surface hold its key bindings back.
bool shortcutsInhibitOffered();
// Whether the window's layer surface takes the keyboard from now on; nothing
// when the window has none.
void setLayerKeyboard(QWindow* window, bool exclusive);
// Whether the window currently has a layer surface.
bool hasLayerSurface(QWindow* window);
// Called when the compositor closes a window's layer surface (its output went
// away): the window needs a new surface.
void setLayerClosedHandler(std::function<void(QWindow*)> handler);

} // namespace velmora::wayland
