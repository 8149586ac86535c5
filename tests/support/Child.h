// Runs part of a test in a process of its own: for whatever changes the process (environment, user,
// limits, working directory) or would end it.
#pragma once

#include <functional>
#include <string>

#include <sys/types.h>

namespace ferrivane::test {

// What `body` returned in a forked child; "ended by signal N" or "exit status N" when the child did
// not get that far. Expectations inside `body` are lost, so it returns what is to be compared.
std::string inChild(const std::function<std::string()>& body);

// Makes this process one that file modes apply to: a process of root becomes another user's. Only
// for children.
void becomeUnprivileged();

// Sets an environment variable, or removes it when there is no value. Only for children.
void setVariable(const char* name, const char* value);

// A child that runs until the object goes away, or until `body` returns.
class Child {
  public:
    explicit Child(const std::function<int()>& body);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t pid() const { return pid_; }
    // Waits for its end: the exit status, or minus the signal that ended it.
    int wait();

  private:
    pid_t pid_ = -1;
};

}  // namespace ferrivane::test
