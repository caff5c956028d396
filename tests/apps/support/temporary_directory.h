// A directory of the test's own, gone at its end.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>

namespace tarvex::app::test {

class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "tarvex-test-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
        m_path = name;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string operator/(const std::string& name) const { return (m_path / name).string(); }

    /// Names of all that is in it, in order and each followed by a space.
    std::string Content() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        std::string all;
        for (const std::string& name : names) all += name + " ";
        return all;
    }

    /// What is in it and below, with the bytes of files.
    std::map<std::string, std::string> Files() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_path)) {
            std::string& content = files[entry.path()];
            std::ifstream file(entry.path(), std::ios::binary);
            if (entry.is_regular_file()) content.assign(std::istreambuf_iterator<char>(file), {});
        }
        return files;
    }

  private:
    std::filesystem::path m_path;
};

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline void WriteFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

}  // namespace tarvex::app::test
