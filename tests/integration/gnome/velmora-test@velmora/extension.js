// The integration tests' hands inside the shell: org.gnome.Shell.Eval and the screenshot
// service opened (unsafe mode), a virtual keyboard that types like a real one, and the
// shell's state as one JSON document. session.sh makes the form the shell loads: lines marked
// //@43 for GNOME 43 and 44, //@45 for 45 and later.
//@43 const {Clutter, GLib} = imports.gi;
//@43 const Main = imports.ui.main;
//@45 import Clutter from 'gi://Clutter';
//@45 import GLib from 'gi://GLib';
//@45 import * as Main from 'resource:///org/gnome/shell/ui/main.js';
//@45 import {Extension} from 'resource:///org/gnome/shell/extensions/extension.js';
const windowOf = title => global.get_window_actors().map(a => a.meta_window).find(w => w.get_title() === title);

const hands = {
    // "Control_L+Alt_L+Right": pressed in order, released in reverse.
    press(chord) {
        const keys = chord.split('+').map(name => Clutter[`KEY_${name}`]);
        let time = GLib.get_monotonic_time();
        for (const key of keys)
            this._keyboard.notify_keyval(time++, key, Clutter.KeyState.PRESSED);
        for (const key of keys.reverse())
            this._keyboard.notify_keyval(time++, key, Clutter.KeyState.RELEASED);
    },
    // The shell starts in the overview; a login leaves it at once.
    leaveOverview() {
        if (!Main.layoutManager._startingUp)
            Main.overview.hide();
        return !Main.layoutManager._startingUp && !Main.overview.visible && !Main.overview.animationInProgress;
    },
    activate: title => windowOf(title) && Main.activateWindow(windowOf(title)),
    state: () => ({
        overview: Main.overview.visible,
        switcher: Main.uiGroup.get_children().some(a => a.constructor.name.includes('SwitcherPopup')),
        workspace: global.workspace_manager.get_active_workspace_index(),
        focus: global.display.focus_window?.get_title() ?? '',
        panel: Main.layoutManager.panelBox.visible,
        monitors: Main.layoutManager.monitors.map(m => [m.x, m.y, m.width, m.height]),
        windows: global.get_window_actors().map(({meta_window: w, visible}) => ({
            title: w.get_title(), shown: visible, minimized: w.minimized, fullscreen: w.is_fullscreen(),
            rect: (r => [r.x, r.y, r.width, r.height])(w.get_frame_rect()),
        })),
    }),
};

const lifecycle = {
    enable() {
        global.context.unsafe_mode = true;
        // Its warning would stand in the screenshots.
        Main.messageTray.getSources?.().forEach(source => source.destroy());
        const seat = (global.stage.context?.get_backend() ?? Clutter.get_default_backend()).get_default_seat();
        hands._keyboard = seat.create_virtual_device(Clutter.InputDeviceType.KEYBOARD_DEVICE);
        // A new device's first event is lost.
        hands._keyboard.notify_keyval(GLib.get_monotonic_time(), Clutter.KEY_Shift_L, Clutter.KeyState.RELEASED);
        // When the top bar last came back, in microseconds of the real clock.
        Main.layoutManager.panelBox.connect('notify::visible', box => {
            if (box.visible)
                hands.panelShownAt = GLib.get_real_time();
        });
        global.velmoraTest = hands;
    },
    disable() {
        delete global.velmoraTest;
    },
};
//@43 // eslint-disable-next-line no-unused-vars
//@43 function init() {
//@43     return lifecycle;
//@43 }
//@45 export default class extends Extension {
//@45     enable = () => lifecycle.enable();
//@45     disable = () => lifecycle.disable();
//@45 }
