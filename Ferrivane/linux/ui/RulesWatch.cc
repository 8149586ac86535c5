#include "Ferrivane/linux/ui/RulesWatch.h"

#include <QFileInfo>
#include <utility>

namespace ferrivane {

static constexpr int kMilliseconds = 50;  // one change of a file is told several times

RulesWatch::RulesWatch(const std::filesystem::path& file, std::function<void()> changed)
    : file_(QString::fromStdString(file.string())), changed_(std::move(changed)) {
    soon_.setSingleShot(true);
    soon_.setInterval(kMilliseconds);
    const auto restart = [this] { soon_.start(); };
    QObject::connect(&watcher_, &QFileSystemWatcher::fileChanged, &soon_, restart);
    QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &soon_, restart);
    QObject::connect(&soon_, &QTimer::timeout, &soon_, [this] {
        start();
        changed_();
    });
}

// An editor may replace the file, or that which it is a link to, or write into it.
void RulesWatch::start() {
    const QFileInfo file(file_);
    QStringList paths{file.absolutePath(), file.absoluteFilePath()};
    if (const QString target = file.canonicalFilePath(); !target.isEmpty()) {
        paths << target << QFileInfo(target).absolutePath();
    }
    const QStringList watched = watcher_.files() + watcher_.directories();
    for (const QString& path : paths) {
        if (!watched.contains(path) && QFileInfo::exists(path)) watcher_.addPath(path);
    }
}

void RulesWatch::stop() {
    soon_.stop();
    const QStringList watched = watcher_.files() + watcher_.directories();
    if (!watched.isEmpty()) watcher_.removePaths(watched);
}

}  // namespace ferrivane
