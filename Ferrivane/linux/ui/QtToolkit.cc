// The module's entry.
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QLibraryInfo>
#include <QTimer>
#include <array>
#include <memory>
#include <string>
#include <utility>

#include "Ferrivane/linux/Toolkit.h"
#include "Ferrivane/linux/ui/Alert.h"
#include "Ferrivane/linux/ui/SavePanelWindow.h"
#include "Ferrivane/linux/ui/SettingsMainWindow.h"

namespace ferrivane {
namespace {

constexpr int kClipboardMilliseconds = 10 * 60 * 1000;

class QtToolkit : public Toolkit {
  public:
    void showLaunchFailure(const LaunchFailureAlert& alert,
                           std::function<void(bool holdsClipboard)> closed) override {
        auto* window =
            new Alert(alert, [link = alert.link, closed = std::move(closed)](std::size_t button) {
                constexpr std::size_t kCopyLink = 0;
                if (button == kCopyLink) {
                    QGuiApplication::clipboard()->clear();
                    QGuiApplication::clipboard()->setText(QString::fromStdString(link));
                }
                closed(button == kCopyLink);
            });
        window->show();
        window->raise();
        window->activateWindow();
    }

    void showSavePanel(const SavePanel::Question& question,
                       std::function<void(const SavePanel::Answer&)> answered) override {
        showSavePanelWindow(question, std::move(answered));
    }

    void showSettings(SettingsView& view, const SettingsWindowSetup& setup,
                      const std::optional<std::string>& activationToken) override {
        // Read by the toolkit when a window asks to be activated (Wayland's xdg-activation).
        if (activationToken) {
            qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(*activationToken));
        }
        static auto* const window = new SettingsMainWindow(view, setup);
        window->present();
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    void whenClipboardIsFree(std::function<void()> work) override {
        auto* watch = new QObject(qApp);
        // The watch ends later, and several changes may come before it does.
        const auto finish = [watch,
                             work = std::make_shared<std::function<void()>>(std::move(work))] {
            watch->deleteLater();
            if (const auto once = std::exchange(*work, nullptr)) once();
        };
        QObject::connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, watch, [finish] {
            if (!QGuiApplication::clipboard()->ownsClipboard()) finish();
        });
        QTimer::singleShot(kClipboardMilliseconds, watch, finish);
    }
};

// Those of the platforms that are installed as plugins.
std::string available(const std::string& platforms) {
    const QDir folder(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms");
    QStringList found;
    for (const QString& platform : QString::fromStdString(platforms).split(';')) {
        if (!folder.entryList({"libq" + platform + "*.so"}).isEmpty()) found += platform;
    }
    return found.join(';').toStdString();
}

}  // namespace
}  // namespace ferrivane

// Null when the toolkit has no plugin for any of the platforms, which are separated by ";".
extern "C" __attribute__((visibility("default"))) ferrivane::Toolkit* ferrivane_toolkit(
    const char* platforms) {
    static std::string usable = ferrivane::available(platforms);
    if (usable.empty()) return nullptr;
    qunsetenv("QT_NO_GLIB");  // GLib's loop is the one that runs
    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    QCoreApplication::setApplicationName(QStringLiteral("Ferrivane"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.hollowmere.ferrivane"));
    static std::string name = "Ferrivane";
    static std::string option = "-platform";
    static std::array<char*, 4> arguments{name.data(), option.data(), usable.data(), nullptr};
    static int count = 3;
    // Never deleted: that gives no memory back.
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
    static auto* const application = new QApplication(count, arguments.data());
    (void)application;
    QApplication::setQuitOnLastWindowClosed(false);
    static ferrivane::QtToolkit toolkit;
    return &toolkit;
}
