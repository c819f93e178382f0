// The Wi-Fi in GLib's main loop:
//
//     glib_loop SSID
//
// Do not call g_main_context_invoke in a callback of the Manager: before the loop runs, it calls the function directly,
// on the Manager's thread. A source of g_idle_add may still be queued when its data no longer exists.
#include <glib-unix.h>
#include <unistd.h>
#include <wifi/client/follower.h>

#include <iostream>
#include <memory>
#include <string>

#include "session.h"

namespace {

using Loop = std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)>;
using Channel = std::unique_ptr<GIOChannel, decltype(&g_io_channel_unref)>;
using Text = std::unique_ptr<gchar, decltype(&g_free)>;

struct App {
    kaz::wifi::client::Follower wifi;
    example::Session session;
    Loop loop{g_main_loop_new(nullptr, FALSE), g_main_loop_unref};

    explicit App(const char* ssid) : session(wifi.manager(), ssid) {}
};

gboolean onChanged(gint /*fd*/, GIOCondition /*condition*/, gpointer data) {
    auto& app = *static_cast<App*>(data);
    if (const auto now = app.wifi.takeNewest()) {
        app.session.show(*now);
    }
    return G_SOURCE_CONTINUE;
}

gboolean onInput(GIOChannel* input, GIOCondition /*condition*/, gpointer data) {
    auto& app = *static_cast<App*>(data);
    gchar* line = nullptr;
    gsize end = 0;
    const auto status = g_io_channel_read_line(input, &line, nullptr, &end, nullptr);
    const Text owned(line, g_free);
    if (status == G_IO_STATUS_AGAIN) {
        return G_SOURCE_CONTINUE;
    }
    if (status != G_IO_STATUS_NORMAL) {
        g_main_loop_quit(app.loop.get());
        return G_SOURCE_REMOVE;
    }
    app.session.enter(std::string(line, end));
    return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: glib_loop SSID\n";
        return 2;
    }
    App app(argv[1]);
    app.wifi.manager().scan();

    const Channel input(g_io_channel_unix_new(STDIN_FILENO), g_io_channel_unref);
    g_io_channel_set_encoding(input.get(), nullptr, nullptr);  // bytes: a passphrase need not be UTF-8
    g_io_add_watch(input.get(), static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), onInput, &app);
    const guint changes = g_unix_fd_add(app.wifi.fd(), G_IO_IN, onChanged, &app);
    g_main_loop_run(app.loop.get());
    g_source_remove(changes);
}
