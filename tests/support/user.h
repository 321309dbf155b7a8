// The user of a test: reads message boxes and answers them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/platform.h"

namespace stratovane {

/// Notes what the user is told and asked; questions are answered as prepared, else no.
class User {
  public:
    User() {
        said().clear();
        answers().clear();
        setMessageBoxHook([](const char* text, int question) {
            said().emplace_back(text);
            if (question == 0 || answers().empty()) return 0;
            const int answer = answers().front();
            answers().erase(answers().begin());
            return answer;
        });
    }
    ~User() { setMessageBoxHook(nullptr); }
    User(const User&) = delete;
    User& operator=(const User&) = delete;

    void willAnswer(std::vector<int> prepared) { answers() = std::move(prepared); }
    /// What was shown since last asked.
    std::vector<std::string> takeSaid() { return std::exchange(said(), {}); }

  private:
    static std::vector<std::string>& said() {
        static std::vector<std::string> texts;
        return texts;
    }
    static std::vector<int>& answers() {
        static std::vector<int> prepared;
        return prepared;
    }
};

}  // namespace stratovane
