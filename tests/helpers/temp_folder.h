// SPDX-License-Identifier: MIT
// A folder of a test's own, gone with all it holds when the test ends.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/platform/platform.h"

namespace traguardo::test {

class TempFolder {
 public:
  TempFolder() : path_(std::filesystem::temp_directory_path() / ("traguardo-" + platform::unique_token())) {
    std::filesystem::create_directories(path_);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }

  std::filesystem::path path() const { return path_; }
  // The path of a file in the folder as a host gives it, and as the library takes it.
  std::string file(const std::string& name) const { return (path_ / name).string(); }
  std::wstring wide(const std::string& name) const { return platform::path_from_host_bytes(file(name)); }

  std::string write(const std::string& name, const std::vector<u8>& bytes) const {
    std::ofstream stream(path_ / name, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return file(name);
  }
  std::string write(const std::string& name, const std::string& text) const {
    return write(name, std::vector<u8>(text.begin(), text.end()));
  }
  std::string read(const std::string& name) const {
    std::ifstream stream(path_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }
  // A text file, with line feeds alone at its line ends on every platform.
  std::string read_text(const std::string& name) const {
    std::string text = read(name);
    std::erase(text, '\r');
    return text;
  }
  // The names in the folder, sorted.
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      found.push_back(entry.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
  }

 private:
  std::filesystem::path path_;
};

// A variable of the environment while this lives.
class EnvironmentVariable {
 public:
  EnvironmentVariable(const char* name, const std::string& value) : name_(name) { set(value); }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() { set(""); }

 private:
  // An empty value takes the variable away, or is taken for that.
  void set(const std::string& value) const {
#ifdef _WIN32
    ::_putenv_s(name_, value.c_str());
#else
    ::setenv(name_, value.c_str(), 1);
#endif
  }
  const char* name_;
};

}  // namespace traguardo::test
