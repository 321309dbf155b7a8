// A folder of a test's own, gone afterwards.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = testing::TempDir() + "stratovane-XXXXXX";
        if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code failed;
        if (!path_.empty()) std::filesystem::remove_all(path_, failed);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    void put(const std::string& name, const std::string& text) const {
        std::ofstream{*this / name, std::ios::binary} << text;
    }
    std::string get(const std::string& name) const {
        std::ifstream in{*this / name, std::ios::binary};
        return {std::istreambuf_iterator<char>{in}, {}};
    }

  private:
    std::filesystem::path path_;
};

/// Sets an environment variable, or unsets it for null, until the end of its scope.
class ScopedEnvironment {
  public:
    ScopedEnvironment(const char* name, const char* value) : name_{name} {
        if (const char* former = getenv(name)) former_ = former, had_ = true;
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    }
    ~ScopedEnvironment() { had_ ? setenv(name_, former_.c_str(), 1) : unsetenv(name_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    const char* name_;
    std::string former_;
    bool had_ = false;
};
