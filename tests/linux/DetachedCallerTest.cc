#include <array>
#include <cstdio>
#include <stdexcept>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include "Ferrivane/linux/DetachedCaller.h"
#include "Ferrivane/linux/Processes.h"
#include "tests/linux/Program.h"
#include "tests/support/Child.h"

namespace ferrivane {
namespace {

struct Pipe {
    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe");
        reading = FileDescriptor(ends[0]);
        writing = FileDescriptor(ends[1]);
    }
    // Everything that is written until nobody can write any more.
    std::string readAll() {
        writing.reset();
        std::string text;
        char c = 0;
        while (::read(reading.get(), &c, 1) == 1) text.push_back(c);
        return text;
    }
    void write(const std::string& text) const {
        (void)!::write(writing.get(), text.data(), text.size());
    }

    FileDescriptor reading;
    FileDescriptor writing;
};

// A process that somebody waits for: detaches, and does its work in the child.
class DetachedCallerTest : public ::testing::Test {
  protected:
    // The exit status that the one who waits gets.
    int statusOf(const std::function<int(DetachedCaller&)>& work) const {
        test::Child process([&] {
            DetachedCaller caller(entries);
            caller.detach();
            return work(caller);
        });
        return process.wait();
    }

    const DesktopEntries entries{{}};
};

TEST_F(DetachedCallerTest, TheCallerGetsTheStatusOfTheWork) {
    for (const int status : {0, 1, 7, 255}) {
        EXPECT_EQ(statusOf([&](DetachedCaller& caller) {
                      caller.release(status);
                      return 99;
                  }),
                  status);
    }
}

TEST_F(DetachedCallerTest, WorkThatEndsWithoutAStatusFailed) {
    EXPECT_EQ(statusOf([](DetachedCaller&) { return 0; }), 1);
    EXPECT_EQ(statusOf([](DetachedCaller&) { return ::raise(SIGKILL); }), 1);
}

TEST_F(DetachedCallerTest, OnlyTheFirstReleaseCounts) {
    EXPECT_EQ(statusOf([](DetachedCaller& caller) {
                  caller.release(3);
                  caller.release(4);
                  return 5;
              }),
              3);
}

TEST_F(DetachedCallerTest, WithoutADetachNothingHappens) {
    test::Child process([&] {
        DetachedCaller caller(entries);
        caller.release(3);
        return 5;
    });
    EXPECT_EQ(process.wait(), 5);
    EXPECT_EQ(test::inChild([&] {
                  ::dup2(STDERR_FILENO, STDOUT_FILENO);
                  DetachedCaller caller(entries);
                  caller.release(3);
                  return std::string(::fcntl(STDOUT_FILENO, F_GETFD) >= 0 ? "open" : "closed");
              }),
              "open");
}

TEST_F(DetachedCallerTest, TheCallerGoesOnWhileTheWorkDoes) {
    Pipe output;
    Pipe about;
    Pipe gate;
    Pipe end;
    const int status = statusOf([&](DetachedCaller& caller) {
        for (Pipe* pipe : {&output, &about, &end}) pipe->reading.reset();
        gate.writing.reset();
        ::dup2(output.writing.get(), STDOUT_FILENO);
        ::dup2(output.writing.get(), STDERR_FILENO);
        output.writing.reset();
        (void)!::write(STDOUT_FILENO, "out", 3);
        (void)!::write(STDERR_FILENO, "err", 3);
        about.write(std::to_string(::getpid()) +
                    (::getsid(0) == ::getpid() ? " leads" : " follows"));
        about.writing.reset();
        caller.release(0);
        (void)!::write(STDOUT_FILENO, "lost", 4);
        gate.readAll();
        end.write("done");
        return 0;
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output.readAll(), "outerr")
        << "whoever reads it to its end does not wait for the work";
    const std::string process = about.readAll();
    EXPECT_TRUE(process.ends_with(" leads")) << "in a session of its own";
    EXPECT_FALSE(test::isGone(std::stoi(process)));
    gate.writing.reset();
    EXPECT_EQ(end.readAll(), "done");
}

TEST_F(DetachedCallerTest, TheWorkOutlivesItsCaller) {
    Pipe gate;
    Pipe end;
    {
        const test::Child process([&] {
            end.reading.reset();
            gate.writing.reset();
            DetachedCaller caller(entries);
            caller.detach();
            end.write("at work, ");
            gate.readAll();
            caller.release(0);
            end.write("done");
            return 0;
        });
        std::string begun(9, '\0');
        ASSERT_EQ(::read(end.reading.get(), begun.data(), begun.size()), 9);
        EXPECT_EQ(begun, "at work, ");
    }  // the one who is waited for is killed
    gate.writing.reset();
    EXPECT_EQ(end.readAll(), "done");
}

TEST_F(DetachedCallerTest, ACallerThatStoppedReadingDoesNotEndTheWork) {
    EXPECT_EQ(statusOf([&](DetachedCaller& caller) {
                  Pipe output;
                  output.reading.reset();
                  const bool isRefused = ::write(output.writing.get(), "x", 1) < 0;
                  caller.release(isRefused ? 5 : 6);
                  return 0;
              }),
              5);
}

TEST_F(DetachedCallerTest, WhatIsStillInABufferIsWrittenOnce) {
    std::fflush(stdout);
    Pipe output;
    test::Child process([&] {
        output.reading.reset();
        ::dup2(output.writing.get(), STDOUT_FILENO);
        std::fputs("once", stdout);
        DetachedCaller caller(entries);
        caller.detach();
        std::fflush(stdout);
        caller.release(0);
        return 0;
    });
    EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(output.readAll(), "once");
}

TEST_F(DetachedCallerTest, WhenNoChildCanBeMadeTheWorkGoesOnHere) {
    EXPECT_EQ(test::inChild([&] {
                  const struct rlimit none{};
                  test::becomeUnprivileged();
                  ::setrlimit(RLIMIT_NPROC, &none);
                  const pid_t before = ::getpid();
                  DetachedCaller caller(entries);
                  caller.detach();
                  caller.release(3);
                  return std::string(::getpid() == before ? "the same process" : "another");
              }),
              "the same process");
}

TEST_F(DetachedCallerTest, TheOpenerIsKnownAsItWasBeforeTheDetach) {
    Pipe answer;
    test::Child process([&] {
        answer.reading.reset();
        DetachedCaller caller(entries);
        const auto before = caller.opener();
        caller.detach();
        answer.write(caller.opener() == before ? "the same" : "another");
        caller.release(0);
        return 0;
    });
    EXPECT_EQ(answer.readAll(), "the same");
    process.wait();
}

}  // namespace
}  // namespace ferrivane
