// Tells when a file is written, replaced, or made again.
#pragma once

#include <QFileSystemWatcher>
#include <QTimer>
#include <filesystem>
#include <functional>

namespace ferrivane {

class RulesWatch {
  public:
    // `changed` is called soon after a change, once for several.
    RulesWatch(const std::filesystem::path& file, std::function<void()> changed);

    void start();
    void stop();

  private:
    const QString file_;
    const std::function<void()> changed_;
    QFileSystemWatcher watcher_;
    QTimer soon_;
};

}  // namespace ferrivane
