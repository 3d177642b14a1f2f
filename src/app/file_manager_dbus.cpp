#include "app/file_manager_dbus.h"

#include "app/show_request.h"
#include "dirmodel/path_text.h"
#include "fileops/engine/transfer.h"
#include "ui/background.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace dorn {

namespace {

constexpr QLatin1String kName("org.freedesktop.FileManager1");
constexpr QLatin1String kPath("/org/freedesktop/FileManager1");
constexpr QLatin1String kInvalid("org.freedesktop.DBus.Error.InvalidArgs");
constexpr QLatin1String kNotFound("org.freedesktop.DBus.Error.FileNotFound");
constexpr QLatin1String kTooMany("org.freedesktop.DBus.Error.LimitsExceeded");
constexpr QLatin1String kFailed("org.freedesktop.DBus.Error.Failed");

constexpr std::size_t kMostWindows = 20;  // that one call opens
constexpr std::size_t kStartupIdLimit = 1024;

enum class Method { ShowFolders, ShowItems, ShowItemProperties };
constexpr std::array<const char*, 3> kMethods = {"ShowFolders", "ShowItems", "ShowItemProperties"};

std::optional<Method> method_of(const QString& member) {
    for (std::size_t i = 0; i < kMethods.size(); ++i) {
        if (member == QLatin1String(kMethods[i])) return static_cast<Method>(i);
    }
    return std::nullopt;
}

// A call, checked piece by piece: on the event loop, on a spare thread, on the event loop again.
struct Call {
    Method method = Method::ShowFolders;
    std::vector<std::string> paths;
    std::string startup_id;
    std::vector<ShowRequest> windows;
};

// Names that go from the parent directory to somewhere else are no items.
bool is_item(const std::string& path) {
    const std::string name = path.substr(path.rfind('/') + 1);
    return !name.empty() && name != "." && name != "..";
}

bool is_directory_there(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool is_there(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

void add_item(Call* call, const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string directory = path.substr(0, std::max<std::size_t>(slash, 1));
    auto window = std::ranges::find(call->windows, directory, &ShowRequest::directory);
    if (window == call->windows.end()) {
        call->windows.push_back({directory, {}, call->method == Method::ShowItemProperties});
        window = call->windows.end() - 1;
    }
    window->names.push_back(path.substr(slash + 1));
}

// Makes windows of those paths that exist. On a spare thread: a path may lie on a dead mount.
void find_windows(Call* call) {
    for (const std::string& path : call->paths) {
        if (call->windows.size() > kMostWindows) return;
        if (call->method == Method::ShowFolders) {
            if (is_directory_there(path)) call->windows.push_back({path, {}, false});
        } else if (is_there(path)) {
            add_item(call, path);
        }
    }
}

// The first window alone takes the keyboard.
QDBusMessage open_windows(const Call& call, const QDBusMessage& message) {
    if (call.windows.empty())
        return message.createErrorReply(kNotFound, QStringLiteral("There is nothing to show."));
    if (call.windows.size() > kMostWindows)
        return message.createErrorReply(kTooMany, QStringLiteral("Too many folders."));
    std::string startup_id = call.startup_id;
    for (const ShowRequest& window : call.windows) {
        if (show_request_start(window, startup_id) == -1)
            return message.createErrorReply(kFailed, QStringLiteral("No window could be opened."));
        startup_id.clear();
    }
    return message.createReply();
}

// The call that a message makes; nothing when none of its URIs names a local file.
std::shared_ptr<Call> call_of(Method method, const QDBusMessage& message) {
    auto call = std::make_shared<Call>();
    call->method = method;
    const QStringList uris = message.arguments().at(0).toStringList();
    for (const QString& uri : uris) {
        std::optional<std::string> path = transfer_path_of_uri(uri.toStdString());
        if (!path || path->size() >= kPathSize) continue;
        if (method == Method::ShowFolders || is_item(*path)) call->paths.push_back(*path);
    }
    if (call->paths.empty()) return nullptr;
    call->startup_id = message.arguments().at(1).toString().toStdString();
    if (call->startup_id.size() > kStartupIdLimit) call->startup_id.clear();
    return call;
}

class FileManagerObject : public QDBusVirtualObject {
  public:
    using QDBusVirtualObject::QDBusVirtualObject;

    QString introspect(const QString&) const override {
        QString methods;
        for (const char* name : kMethods)
            methods += QStringLiteral(
                           "<method name=\"%1\"><arg type=\"as\" name=\"URIs\" "
                           "direction=\"in\"/><arg type=\"s\" name=\"StartupId\" "
                           "direction=\"in\"/></method>")
                           .arg(QLatin1String(name));
        return QStringLiteral("<interface name=\"%1\">%2</interface>").arg(kName, methods);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        const std::optional<Method> method = method_of(message.member());
        const bool ours = message.interface().isEmpty() || message.interface() == kName;
        if (!method || !ours) return false;
        const bool well_formed = message.signature() == QLatin1String("ass");
        const auto call = well_formed ? call_of(*method, message) : nullptr;
        if (call == nullptr) {
            bus.send(message.createErrorReply(kInvalid, QStringLiteral("No local file is named.")));
            return true;
        }
        ui_async(
            nullptr, [call] { find_windows(call.get()); },
            [call, message, bus] { bus.send(open_windows(*call, message)); });
        return true;
    }
};

// Without an address the bus library would start a bus of its own.
bool has_bus() {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    if (address != nullptr && *address != '\0') return true;
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return runtime != nullptr && access((std::string(runtime) + "/bus").c_str(), F_OK) == 0;
}

// The program in front of the queue answers; when it ends the next one does.
void offer(QDBusConnection bus) {
    if (!bus.isConnected()) return;
    bus.registerVirtualObject(kPath, new FileManagerObject(QCoreApplication::instance()));
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    constexpr uint kQueueAndKeep = 0;
    request << QString(kName) << kQueueAndKeep;
    bus.send(request);
}

}  // namespace

void file_manager_dbus_start() {
    if (!has_bus()) return;
    auto bus = std::make_shared<std::optional<QDBusConnection>>();
    ui_async(
        nullptr,
        [bus] {
            bus->emplace(
                QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("dorn")));
        },
        [bus] { offer(**bus); });
}

}  // namespace dorn
