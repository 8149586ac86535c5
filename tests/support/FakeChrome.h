// A stand-in for a running Chrome: listens on a real socket, with the links of a real user data
// directory beside it, and behaves towards each connection as it is told. Everything happens on a
// thread of its own, one connection after another, as in Chrome.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "core/support/FileDescriptor.h"

namespace ferrivane::test {

class FakeChrome {
  public:
    using Milliseconds = std::chrono::milliseconds;

    enum class Reading {
        untilEnd,    // up to the end of the message or 32,768 bytes
        once,        // what one read of 32,768 bytes returns is the message
        firstBytes,  // the first five bytes, and leaves the rest
        arrival,     // waits until something has arrived, and leaves it
        nothing,
    };
    enum class Ending { close, hold };  // hold: until this object goes away

    // What becomes of one connection, from top to bottom.
    struct Behaviour {
        Milliseconds beforeReading{0};
        Reading reading = Reading::untilEnd;
        Milliseconds beforeAnswer{0};
        std::vector<std::string> answer{"ACK"};  // one write each
        // The longest time between two writes; the next one follows at once when the other side has
        // hung up.
        Milliseconds betweenWrites{2000};
        Ending ending = Ending::close;
    };
    static Behaviour answers(std::string text) { return {.answer = {std::move(text)}}; }
    static Behaviour neverReads() {
        return {.reading = Reading::nothing, .answer = {}, .ending = Ending::hold};
    }
    static Behaviour neverAnswers() { return {.answer = {}, .ending = Ending::hold}; }
    static Behaviour closesAtOnce() { return {.reading = Reading::nothing, .answer = {}}; }
    static Behaviour closesWhileReading() { return {.reading = Reading::firstBytes, .answer = {}}; }
    static Behaviour closesAfterReading() { return {.answer = {}}; }
    // Closing with unread bytes resets the connection.
    static Behaviour resets() { return {.reading = Reading::arrival, .answer = {}}; }

    struct Options {
        std::size_t socketPathLength = 0;  // in bytes; 0: as it comes
        int backlog = 5;                   // as Chrome's
        bool accepting = true;             // else nothing is accepted before startAccepting()
    };

    struct Message {
        std::string bytes;
        bool wellFormed = false;  // "START", a working directory and at least one element of argv
        std::string currentDirectory;
        std::vector<std::string> argv;

        static Message from(std::string bytes);
    };

    // Makes "user-data" and the socket's folder in `directory`, with all links, and listens.
    explicit FakeChrome(const std::filesystem::path& directory)
        : FakeChrome(directory, Options()) {}
    FakeChrome(const std::filesystem::path& directory, const Options& options);
    ~FakeChrome();
    FakeChrome(const FakeChrome&) = delete;
    FakeChrome& operator=(const FakeChrome&) = delete;

    const std::filesystem::path& userDataDirectory() const { return userData_; }
    const std::string& socketPath() const { return socketPath_; }
    std::filesystem::path socketDirectory() const;

    // For connections accepted from now on; the last of several stays in force.
    void behave(std::vector<Behaviour> oneAfterAnother);
    void behave(Behaviour always) { behave(std::vector{std::move(always)}); }

    // The text of the cookie links; absent removes the link. Each is replaced atomically.
    void setUserDataCookie(const std::optional<std::string>& text);
    void setSocketCookie(const std::optional<std::string>& text);
    void setLock(const std::optional<std::string>& text);

    void startAccepting();
    // Connects until no further connection would be queued. Needs `accepting` off.
    void fillBacklog();

    // Ends as by a signal: nobody listens any more, the links and the socket stay behind.
    void crash();
    // Ends as on the user's command: nothing stays behind.
    void quit();

    // Every message so far, in order of arrival. A connection that brought no byte brought no
    // message.
    std::vector<Message> messages() const;
    // False when they have not arrived within the limit.
    bool waitForMessages(std::size_t count, Milliseconds limit = Milliseconds(20000)) const;
    std::size_t connections() const;

  private:
    void run();
    void serve(FileDescriptor connection);
    std::string read(int fd, Reading reading) const;
    bool pause(Milliseconds time, int fd = -1, short events = 0) const;
    Behaviour nextBehaviour();
    void stop();

    std::filesystem::path userData_;
    std::string socketPath_;
    FileDescriptor listener_;
    FileDescriptor wakeUp_;   // readable once this object wants to stop
    FileDescriptor stopper_;  // its other end
    std::vector<FileDescriptor> queued_;
    std::vector<FileDescriptor> held_;  // of the thread
    std::thread thread_;

    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::vector<Behaviour> behaviours_{Behaviour()};
    std::vector<Message> messages_;
    std::size_t connections_ = 0;
};

}  // namespace ferrivane::test
