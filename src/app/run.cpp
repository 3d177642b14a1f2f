#include "app/run.h"

#include "app/base.h"
#include "app/base_window.h"
#include "app/file_manager_dbus.h"
#include "app/init.h"
#include "app/show_request.h"
#include "platform/signals.h"
#include "platform/standard_descriptors.h"
#include "platform/usage.h"
#include "ui/desktop_style.h"
#include "ui/dialogs.h"
#include "ui/qt_widget.h"

#include <QApplication>
#include <QLocale>
#include <QMainWindow>
#include <QSocketNotifier>
#include <QTimer>
#include <QWindow>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sys/prctl.h>

namespace dorn {

namespace {

const char* program_name(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

// 0 to go on, else the exit status plus one.
int show_help(const WindowOptions& options, const std::string& error, const char* program) {
    if (!options.help) return 0;
    if (!error.empty()) std::fprintf(stderr, "%s: %s\n", program, error.c_str());
    std::fputs(usage_text(program).c_str(), error.empty() ? stdout : stderr);
    return error.empty() ? 1 : 2;
}

void choose_server(const std::string& server) {
    if (server.empty()) return;
    const bool wayland = server.rfind("wayland", 0) == 0;
    setenv(wayland ? "WAYLAND_DISPLAY" : "DISPLAY", server.c_str(), 1);
    // Else the toolkit goes by the kind of the session, whichever server is named.
    setenv("QT_QPA_PLATFORM", wayland ? "wayland" : "xcb", 0);
}

// The toolkit sets the user's locale. Our texts are in one language, and their dates would lose the
// half of the day where a locale has no words for it.
void keep_formats() {
    std::setlocale(LC_NUMERIC, "C");
    std::setlocale(LC_TIME, "C");
}

void apply_options(QMainWindow* base, const WindowOptions& options) {
    base->resize(options.width.value_or(base->width()), options.height.value_or(base->height()));
    if (options.x || options.y)
        base->move(options.x.value_or(base->x()), options.y.value_or(base->y()));
}

void show_window(QMainWindow* base, const WindowOptions& options) {
    switch (options.state) {
        case WindowOptions::State::Iconified:
            base->showMinimized();
            break;
        case WindowOptions::State::Maximized:
            base->showMaximized();
            break;
        case WindowOptions::State::Normal:
            base->show();
            break;
    }
}

// Takes the keyboard as whoever started us allows. X11's word for it the toolkit uses by itself.
void take_keyboard(const QMainWindow* base) {
    if (qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN") && base->windowHandle() != nullptr &&
        QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        base->windowHandle()->requestActivate();
    // Not for the programs that are started from here.
    unsetenv("XDG_ACTIVATION_TOKEN");
    unsetenv("DESKTOP_STARTUP_ID");
}

void take_signals() {
    bool refresh = false;
    bool terminate = false;
    for (int number = signals_take(); number != 0; number = signals_take())
        (number == SIGWINCH ? refresh : terminate) = true;
    if (terminate)
        signal_terminate();
    else if (refresh)
        signal_refresh();
}

constexpr int kAlertGraceMs = 400;

void tell_when_idle(QObject* context, void (*ready)()) {
    // Two turns of the loop: the first paints what the set-up left to paint.
    QTimer::singleShot(0, context, [context, ready] { QTimer::singleShot(0, context, ready); });
}

}  // namespace

int dorn_run(int argc, char** argv, void (*ready)()) {
    hold_standard_descriptors();
    std::string error;
    const WindowOptions options = usage_parse(argc, argv, &error);
    if (const int status = show_help(options, error, program_name(argv[0])); status != 0)
        return status - 1;
    choose_server(options.server);
    // Other instances' refresh finds us by this name, whatever the file is called that was
    // executed.
    prctl(PR_SET_NAME, "dorn");
    const ShowRequest request = show_request_take();
    ui_setup_icon_theme();
    int qt_argc = 1;  // no option of the toolkit's own may take one of ours
    QApplication application(qt_argc, argv);
    QApplication::setApplicationName(QStringLiteral("dorn"));
    QGuiApplication::setDesktopFileName(QStringLiteral("dorn"));
    // Operations outlive the main window, and a window that tells of a failed one outlives nothing.
    QApplication::setQuitOnLastWindowClosed(false);
    ui_set_alert_grace(kAlertGraceMs);
    keep_formats();
    QGuiApplication::setLayoutDirection(QLocale::system().textDirection());
    ui_setup_style();

    init(argc, argv);
    std::unique_ptr<QSocketNotifier> notifier;
    if (const int signals = signals_install(); signals != -1) {
        notifier = std::make_unique<QSocketNotifier>(signals, QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, take_signals);
    }

    const std::unique_ptr<QMainWindow> base(base_make());
    base_setup(handle(base.get()), 1);
    base_opening();
    apply_options(base.get(), options);
    show_window(base.get(), options);
    take_keyboard(base.get());
    QTimer::singleShot(0, base.get(), [&base, &request, ready] {
        base_setup(handle(base.get()), 2);
        show_request_apply(request);
        tell_when_idle(base.get(), file_manager_dbus_start);
        if (ready != nullptr) tell_when_idle(base.get(), ready);
    });
    // The toolkit ends the process by itself when the display goes away. Registered behind all that
    // saving uses, so it runs before any of that is taken down.
    std::atexit([] { base_closing(); });
    return QApplication::exec();
}

}  // namespace dorn
