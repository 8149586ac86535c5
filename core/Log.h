// The log file: one line per event, written in the background, moved aside once it is too large.
//
// Any thread may log at any time; callers only take the time stamp and enqueue. Nothing here ever
// fails or reports: what cannot be written is lost and logging goes on with the next line. Several
// processes may write to one file: lines are appended whole, and a lock on the folder covers the
// check of the size, the move and the append. Where it cannot be locked, as in homes on some
// network disks, the file is moved at twice the size.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "core/support/SerialQueue.h"

namespace ferrivane {

class Log {
  public:
    static constexpr std::string_view kFileName = "ferrivane.log";

    // The process-wide log, in Paths::logDirectory(). Never destroyed, so that a disk that hangs
    // cannot hold up the end of the process: see flush.
    static Log& shared();

    // Creates the folder (0700) at once, with missing folders above it.
    explicit Log(const std::filesystem::path& directory);

    void info(std::string message) { write("INFO", std::move(message)); }
    void warn(std::string message) { write("WARN", std::move(message)); }
    void error(std::string message) { write("ERROR", std::move(message)); }

    // Waits until everything logged so far is in the file; false when that takes longer. The limit
    // is what the end of a process may take.
    bool flush(std::chrono::milliseconds limit = std::chrono::seconds(2)) {
        return queue.drain(limit);
    }

    const std::filesystem::path fileURL;
    // Whether each line also goes to standard error. Set it before the first line.
    bool echoToStderr = false;

  private:
    using Time = std::chrono::system_clock::time_point;

    void write(std::string_view level, std::string message);
    void append(Time time, std::string_view level, std::string_view message) const;
    void rotateIfNeeded(std::uint64_t limit) const;

    static constexpr std::uint64_t maxBytes = std::uint64_t{2} * 1024 * 1024;
    SerialQueue queue;
};

}  // namespace ferrivane
