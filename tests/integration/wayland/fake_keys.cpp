// Presses key chords on KWin through org_kde_kwin_fake_input, which KWin grants to
// a program whose desktop entry lists it in X-KDE-Wayland-Interfaces (the KWin
// test writes one for this binary).
//
//   velmora-fake-keys CHORD...    e.g. ctrl+alt+shift+tab super+2 h i return
// Each chord's keys go down in order and up in reverse; 100 ms between chords.
#include "fake-input-client-protocol.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <linux/input-event-codes.h>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>
#include <wayland-client.h>

namespace {

org_kde_kwin_fake_input* g_input = nullptr;

void global(void*, wl_registry* registry, uint32_t name, const char* interface, uint32_t version)
{
    if (std::strcmp(interface, org_kde_kwin_fake_input_interface.name) == 0 && version >= 4)
        g_input = static_cast<org_kde_kwin_fake_input*>(
            wl_registry_bind(registry, name, &org_kde_kwin_fake_input_interface, 4));
}
void globalRemove(void*, wl_registry*, uint32_t) {}
const wl_registry_listener kListener = {global, globalRemove};

const std::map<std::string, uint32_t>& keys()
{
    static const std::map<std::string, uint32_t> table = [] {
        std::map<std::string, uint32_t> t{
            {"ctrl", KEY_LEFTCTRL}, {"alt", KEY_LEFTALT},  {"shift", KEY_LEFTSHIFT}, {"super", KEY_LEFTMETA},
            {"tab", KEY_TAB},       {"return", KEY_ENTER}, {"escape", KEY_ESC},      {"space", KEY_SPACE},
            {"f1", KEY_F1},         {"f4", KEY_F4},        {"down", KEY_DOWN}};
        const char* rows[] = {"qwertyuiop", "asdfghjkl", "zxcvbnm"};
        const uint32_t starts[] = {KEY_Q, KEY_A, KEY_Z};
        for (int row = 0; row < 3; ++row) {
            for (size_t i = 0; rows[row][i]; ++i)
                t[std::string(1, rows[row][i])] = starts[row] + uint32_t(i);
        }
        t["1"] = KEY_1;
        for (char digit = '2'; digit <= '9'; ++digit)
            t[std::string(1, digit)] = KEY_2 + uint32_t(digit - '2');
        t["0"] = KEY_0;
        return t;
    }();
    return table;
}

} // namespace

int main(int argc, char** argv)
{
    wl_display* display = wl_display_connect(nullptr);
    if (!display) {
        std::fprintf(stderr, "velmora-fake-keys: no Wayland display\n");
        return 1;
    }
    wl_registry* registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &kListener, nullptr);
    wl_display_roundtrip(display);
    if (!g_input) {
        std::fprintf(stderr, "velmora-fake-keys: the compositor does not grant org_kde_kwin_fake_input\n");
        return 1;
    }
    org_kde_kwin_fake_input_authenticate(g_input, "velmora-fake-keys", "integration test");
    for (int i = 1; i < argc; ++i) {
        std::vector<uint32_t> chord;
        std::stringstream parts(argv[i]);
        for (std::string part; std::getline(parts, part, '+');) {
            const auto key = keys().find(part);
            if (key == keys().end()) {
                std::fprintf(stderr, "velmora-fake-keys: unknown key %s\n", part.c_str());
                return 2;
            }
            chord.push_back(key->second);
        }
        for (uint32_t key : chord)
            org_kde_kwin_fake_input_keyboard_key(g_input, key, WL_KEYBOARD_KEY_STATE_PRESSED);
        wl_display_roundtrip(display);
        for (auto key = chord.rbegin(); key != chord.rend(); ++key)
            org_kde_kwin_fake_input_keyboard_key(g_input, *key, WL_KEYBOARD_KEY_STATE_RELEASED);
        wl_display_roundtrip(display);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    wl_display_disconnect(display);
    return 0;
}
