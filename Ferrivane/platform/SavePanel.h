// Asks the person where to save a file. The answer is also the consent to write there. Main thread
// only.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace ferrivane {

class SavePanel {
  public:
    // No folders are made in it.
    struct Question {
        std::filesystem::path directory;  // where it starts
        std::string fileName;             // what it proposes
        std::string button;
        std::string title;
        std::string message;
    };
    struct Answer {
        int response = 0;  // `ok`, or another number
        std::optional<std::filesystem::path> file;
    };
    static constexpr int ok = 1;

    virtual ~SavePanel() = default;

    // The completion is called exactly once, perhaps before the call returns.
    virtual void show(const Question& question, std::function<void(Answer)> completion) = 0;
};

}  // namespace ferrivane
