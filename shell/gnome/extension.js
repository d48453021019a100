// Velmora's part inside GNOME Shell: keeps Velmora's lock above everything while
// Velmora asks for it, tells Velmora which application is in front, hides
// applications and reports Velmora's hot keys.
//
// The build makes two forms of this one file: lines marked //@43 are kept for
// GNOME 43 and 44 (imports.*), lines marked //@45 for GNOME 45 and later (ES
// modules); every other line is common to both.
//
// It holds nothing on its own: everything it holds for a caller is let go as soon
// as that caller's connection to the session bus is gone.

//@43 const {Gio, GLib, Meta, Shell, St} = imports.gi;
//@43 const Main = imports.ui.main;
//@43 const ExtensionUtils = imports.misc.extensionUtils;
//@45 import Gio from 'gi://Gio';
//@45 import GLib from 'gi://GLib';
//@45 import Meta from 'gi://Meta';
//@45 import Shell from 'gi://Shell';
//@45 import St from 'gi://St';
//@45 import * as Main from 'resource:///org/gnome/shell/ui/main.js';
//@45 import {Extension} from 'resource:///org/gnome/shell/extensions/extension.js';

const BUS_NAME = 'org.velmora.Shell';
const OBJECT_PATH = '/org/velmora/Shell';
const INTERFACE_XML = `
<node>
  <interface name="org.velmora.Shell1">
    <method name="Version">
      <arg name="version" type="s" direction="out"/>
    </method>
    <method name="Prepare">
      <arg name="title" type="s" direction="in"/>
      <arg name="surface" type="s" direction="in"/>
    </method>
    <method name="SetLockUp">
      <arg name="up" type="b" direction="in"/>
    </method>
    <method name="SetHoldsKeyboard">
      <arg name="held" type="b" direction="in"/>
    </method>
    <method name="FrontWindow">
      <arg name="window" type="a{ss}" direction="out"/>
    </method>
    <method name="Windows">
      <arg name="windows" type="aa{ss}" direction="out"/>
    </method>
    <method name="Minimize">
      <arg name="ids" type="as" direction="in"/>
      <arg name="count" type="u" direction="out"/>
    </method>
    <method name="BindChord">
      <arg name="accelerator" type="s" direction="in"/>
      <arg name="bound" type="b" direction="out"/>
    </method>
    <method name="UnbindChord">
      <arg name="accelerator" type="s" direction="in"/>
    </method>
    <signal name="FrontWindowChanged"/>
    <signal name="ChordPressed">
      <arg name="accelerator" type="s"/>
    </signal>
  </interface>
</node>`;

const JUDGED_TYPES = [Meta.WindowType.NORMAL, Meta.WindowType.DIALOG, Meta.WindowType.MODAL_DIALOG,
    Meta.WindowType.UTILITY];

class VelmoraShell {
    constructor(version) {
        this._version = String(version);
    }

    enable() {
        this._owner = null; // the unique bus name of the program being served
        this._ownerPid = 0;
        this._watch = 0;
        this._surfaces = new Map(); // window title -> 'Lock' | 'Blank' | 'AboveLock'
        this._locked = false;
        this._holdsKeyboard = true;
        this._hidden = new Set(); // actors of other windows held back while locked
        this._signals = [];
        this._lockSignals = [];
        this._chords = new Map(); // accelerator -> action
        this._shields = [];
        this._lastFront = '';

        this._dbus = Gio.DBusExportedObject.wrapJSObject(INTERFACE_XML, this);
        this._dbus.export(Gio.DBus.session, OBJECT_PATH);
        this._nameId = Gio.bus_own_name_on_connection(Gio.DBus.session, BUS_NAME,
            Gio.BusNameOwnerFlags.NONE, null, null);

        this._connect(this._signals, global.display, 'notify::focus-window', () => this._focusChanged());
        this._connect(this._signals, global.display, 'accelerator-activated',
            (display, action) => this._acceleratorActivated(action));
        // Every key binding of the shell and of mutter passes this filter; while
        // locked only Velmora's own chords get through. A filtered binding's keys go
        // on to the focused window, Velmora's lock.
        this._connect(this._signals, global.window_manager, 'filter-keybinding',
            (wm, binding) => this._locked && !this._isOurBinding(binding.get_name()));
    }

    disable() {
        this._lift();
        for (const action of this._chords.values())
            global.display.ungrab_accelerator(action);
        this._chords.clear();
        this._disconnectAll(this._signals);
        this._unwatch();
        if (this._nameId)
            Gio.bus_unown_name(this._nameId);
        this._nameId = 0;
        this._dbus.unexport();
        this._dbus = null;
    }

    // --- the bus interface ------------------------------------------------------

    VersionAsync(params, invocation) {
        invocation.return_value(new GLib.Variant('(s)', [this._version]));
    }

    PrepareAsync([title, surface], invocation) {
        if (!['Lock', 'Blank', 'AboveLock'].includes(surface) || title.length > 1000) {
            invocation.return_dbus_error('org.velmora.Shell1.Error.InvalidArgs', 'unknown surface');
            return;
        }
        this._adopt(invocation, () => {
            this._surfaces.set(title, surface);
            if (this._locked)
                this._arrange();
        });
    }

    SetLockUpAsync([up], invocation) {
        this._adopt(invocation, () => {
            if (up)
                this._raise();
            else
                this._lift();
        });
    }

    SetHoldsKeyboardAsync([held], invocation) {
        this._adopt(invocation, () => {
            this._holdsKeyboard = held;
            if (this._locked)
                this._focusPreferred();
        });
    }

    FrontWindowAsync(params, invocation) {
        const window = global.display.focus_window;
        const facts = window && this._isJudged(window) ? this._facts(window) : {};
        invocation.return_value(new GLib.Variant('(a{ss})', [facts]));
    }

    WindowsAsync(params, invocation) {
        const windows = global.display.list_all_windows().filter(w => this._isJudged(w)).map(w => this._facts(w));
        invocation.return_value(new GLib.Variant('(aa{ss})', [windows]));
    }

    MinimizeAsync([ids], invocation) {
        let count = 0;
        for (const window of global.display.list_all_windows()) {
            if (this._isJudged(window) && ids.includes(String(window.get_id())) && window.can_minimize()) {
                window.minimize();
                count++;
            }
        }
        invocation.return_value(new GLib.Variant('(u)', [count]));
    }

    BindChordAsync([accelerator], invocation) {
        this._adopt(invocation, () => {
            if (this._chords.has(accelerator))
                return true;
            const action = global.display.grab_accelerator(accelerator, Meta.KeyBindingFlags.NONE);
            if (action === Meta.KeyBindingAction.NONE)
                return false;
            Main.wm.allowKeybinding(Meta.external_binding_name_for_action(action), Shell.ActionMode.ALL);
            this._chords.set(accelerator, action);
            return true;
        }, 'b');
    }

    UnbindChordAsync([accelerator], invocation) {
        this._adopt(invocation, () => this._unbind(accelerator));
    }

    // --- the program being served --------------------------------------------

    // Runs what a call asks once its caller is known as the program served: its
    // process finds its windows, and its leaving the bus lets everything go.
    _adopt(invocation, action, replyType = '') {
        const sender = invocation.get_sender();
        const finish = () => {
            let result;
            try {
                result = action();
            } catch (e) {
                logError(e, 'Velmora');
                invocation.return_dbus_error('org.velmora.Shell1.Error.Failed', String(e));
                return;
            }
            invocation.return_value(replyType ? new GLib.Variant(`(${replyType})`, [result]) : null);
        };
        if (sender === this._owner) {
            finish();
            return;
        }
        Gio.DBus.session.call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus',
            'GetConnectionUnixProcessID', new GLib.Variant('(s)', [sender]), new GLib.VariantType('(u)'),
            Gio.DBusCallFlags.NONE, -1, null, (connection, res) => {
                let pid = 0;
                try {
                    [pid] = connection.call_finish(res).deep_unpack();
                } catch (e) {
                    invocation.return_dbus_error('org.velmora.Shell1.Error.Failed', 'caller unknown');
                    return;
                }
                if (this._owner && sender !== this._owner) {
                    // One program at a time: another may take over once it has left the bus.
                    invocation.return_dbus_error('org.freedesktop.DBus.Error.AccessDenied',
                        'another process holds the lock');
                    return;
                }
                if (sender !== this._owner) {
                    this._owner = sender;
                    this._ownerPid = pid;
                    this._watch = Gio.bus_watch_name_on_connection(Gio.DBus.session, sender,
                        Gio.BusNameWatcherFlags.NONE, null, () => this._programGone());
                }
                finish();
            });
    }

    _unwatch() {
        if (this._watch)
            Gio.bus_unwatch_name(this._watch);
        this._watch = 0;
    }

    _programGone() {
        this._lift();
        for (const accelerator of [...this._chords.keys()])
            this._unbind(accelerator);
        this._surfaces.clear();
        this._unwatch();
        this._owner = null;
        this._ownerPid = 0;
    }

    _unbind(accelerator) {
        const action = this._chords.get(accelerator);
        if (action === undefined)
            return;
        global.display.ungrab_accelerator(action);
        this._chords.delete(accelerator);
    }

    _isOurBinding(name) {
        for (const action of this._chords.values()) {
            if (Meta.external_binding_name_for_action(action) === name)
                return true;
        }
        return false;
    }

    _acceleratorActivated(action) {
        for (const [accelerator, ours] of this._chords) {
            if (ours === action && this._dbus)
                this._dbus.emit_signal('ChordPressed', new GLib.Variant('(s)', [accelerator]));
        }
    }

    // --- applications --------------------------------------------------------

    _isOurs(window) {
        return this._ownerPid !== 0 && window.get_pid() === this._ownerPid;
    }

    _isJudged(window) {
        return JUDGED_TYPES.includes(window.get_window_type()) && !window.is_skip_taskbar();
    }

    _facts(window) {
        const app = Shell.WindowTracker.get_default().get_window_app(window);
        return {
            id: String(window.get_id()),
            wmClass: window.get_wm_class() ?? '',
            wmInstance: window.get_wm_class_instance() ?? '',
            gtkApplicationId: window.get_gtk_application_id() ?? '',
            desktopId: app && !app.is_window_backed() ? app.get_id() ?? '' : '',
            pid: String(window.get_pid()),
            title: window.get_title() ?? '',
        };
    }

    _focusChanged() {
        const window = global.display.focus_window;
        if (this._locked && !(window && this._isOurs(window) && this._surfaceOf(window) !== 'Blank')) {
            // Nothing but Velmora's lock and the windows it lets above take the
            // keyboard while locked.
            this._focusPreferred();
            return;
        }
        const front = window && this._isJudged(window) ? String(window.get_id()) : '';
        if (front === this._lastFront)
            return;
        this._lastFront = front;
        this._dbus?.emit_signal('FrontWindowChanged', null);
    }

    // --- the lock ------------------------------------------------------------

    _surfaceOf(window) {
        return this._surfaces.get(window.get_title() ?? '') ??
            (window.is_fullscreen() ? 'Blank' : 'AboveLock');
    }

    _ourWindows() {
        return global.get_window_actors().map(a => a.meta_window).filter(w => this._isOurs(w));
    }

    _raise() {
        if (this._locked) {
            this._arrange();
            return;
        }
        this._locked = true;
        this._holdsKeyboard = true;
        Main.overview.hide();
        Main.messageTray.bannerBlocked = true;
        this._connect(this._lockSignals, Main.overview, 'showing', () => Main.overview.hide());
        this._connect(this._lockSignals, Main.layoutManager.panelBox, 'notify::visible', () => {
            if (Main.layoutManager.panelBox.visible)
                Main.layoutManager.panelBox.hide();
        });
        this._connect(this._lockSignals, global.display, 'window-created', (d, window) => {
            // A window's actor exists only once it is mapped.
            GLib.idle_add(GLib.PRIORITY_DEFAULT, () => {
                if (this._locked)
                    this._arrange();
                return GLib.SOURCE_REMOVE;
            });
        });
        this._connect(this._lockSignals, global.window_manager, 'map', () => this._arrange());
        this._connect(this._lockSignals, Main.layoutManager, 'monitors-changed', () => this._arrange());
        this._arrange();
    }

    // Velmora's windows above on every monitor with the keyboard; every other
    // window's actor hidden, so that it takes no pointer either.
    _arrange() {
        Main.layoutManager.panelBox.hide();
        this._coverMonitors();
        for (const actor of global.get_window_actors()) {
            const window = actor.meta_window;
            if (this._isOurs(window) || this._hidden.has(actor))
                continue;
            this._hidden.add(actor);
            actor.hide();
            const id = actor.connect('notify::visible', () => {
                if (this._locked && actor.visible)
                    actor.hide();
            });
            actor.connect('destroy', () => this._hidden.delete(actor));
            actor._velmoraVisibleId = id;
        }
        const monitors = Main.layoutManager.monitors.map((m, index) => index);
        const primary = Main.layoutManager.primaryIndex;
        const covers = this._ourWindows().filter(w => this._surfaceOf(w) !== 'AboveLock');
        const lock = covers.find(w => this._surfaceOf(w) === 'Lock');
        const free = monitors.filter(i => i !== primary || !lock);
        for (const window of covers) {
            window.make_above();
            const monitor = window === lock ? primary : free.shift();
            if (monitor !== undefined && window.get_monitor() !== monitor)
                window.move_to_monitor(monitor);
            if (!window.is_fullscreen())
                window.make_fullscreen();
        }
        for (const window of this._ourWindows().filter(w => this._surfaceOf(w) === 'AboveLock'))
            window.make_above();
        this._focusPreferred();
    }

    _focusPreferred() {
        const ours = this._ourWindows().filter(w => !w.minimized);
        const above = ours.filter(w => this._surfaceOf(w) === 'AboveLock');
        const lock = ours.find(w => this._surfaceOf(w) === 'Lock');
        let target = null;
        if (!this._holdsKeyboard || !lock)
            target = above.sort((a, b) => b.get_user_time() - a.get_user_time())[0] ?? lock ?? null;
        else
            target = lock;
        const focus = global.display.focus_window;
        if (target && focus !== target && !(focus && this._isOurs(focus) && focus.get_transient_for() === target))
            target.activate(global.get_current_time());
    }

    _coverMonitors() {
        for (const shield of this._shields)
            shield.destroy();
        this._shields = [];
        // Below every window, above the wallpaper: Velmora's windows show over it,
        // a monitor Velmora has not covered yet shows nothing else.
        const group = Main.layoutManager._backgroundGroup ?? null;
        if (!group)
            return;
        for (const monitor of Main.layoutManager.monitors) {
            const shield = new St.Widget({
                reactive: true, x: monitor.x, y: monitor.y, width: monitor.width, height: monitor.height,
                style: 'background-color: #1e242b;',
            });
            group.add_child(shield);
            this._shields.push(shield);
        }
    }

    _lift() {
        if (!this._locked)
            return;
        this._locked = false;
        this._disconnectAll(this._lockSignals);
        for (const shield of this._shields)
            shield.destroy();
        this._shields = [];
        for (const actor of this._hidden) {
            actor.disconnect(actor._velmoraVisibleId);
            if (!actor.meta_window.minimized)
                actor.show();
        }
        this._hidden.clear();
        for (const window of this._ourWindows()) {
            if (window.is_above())
                window.unmake_above();
        }
        Main.messageTray.bannerBlocked = false;
        Main.layoutManager.panelBox.show();
        // The top bar stays hidden over a full-screen window, as the shell keeps it.
        Main.layoutManager._updateVisibility?.();
    }

    _connect(list, object, signal, handler) {
        list.push([object, object.connect(signal, handler)]);
    }

    _disconnectAll(list) {
        for (const [object, id] of list)
            object.disconnect(id);
        list.length = 0;
    }
}

//@43 class VelmoraExtension {
//@43     enable() {
//@43         this._shell = new VelmoraShell(ExtensionUtils.getCurrentExtension().metadata.version);
//@43         this._shell.enable();
//@43     }
//@43
//@43     disable() {
//@43         this._shell.disable();
//@43         this._shell = null;
//@43     }
//@43 }
//@43
//@43 // eslint-disable-next-line no-unused-vars
//@43 function init() {
//@43     return new VelmoraExtension();
//@43 }
//@45 export default class VelmoraExtension extends Extension {
//@45     enable() {
//@45         this._shell = new VelmoraShell(this.metadata.version);
//@45         this._shell.enable();
//@45     }
//@45
//@45     disable() {
//@45         this._shell.disable();
//@45         this._shell = null;
//@45     }
//@45 }
